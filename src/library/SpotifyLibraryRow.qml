import QtQuick
import QtQuick.Controls
import QtQml.Models

// One row of a library list: the cover (or its index, or the bars of the song playing now), the
// title and subtitle, and for songs the queue and like controls. Clicks go to the view's rules.
Item {
    id: row
    required property int index
    required property string itemID
    required property string name
    required property string subtitle
    required property string kind
    required property var image
    required property string uri
    required property var liked // undefined while the saved state is being asked
    required property var artistNames
    required property var albumURI
    property var model      // the list model the row belongs to
    property var view       // LibraryViewModel
    property var queue      // the song queue
    property var player
    property bool numbered: false
    property string context: ""  // "liked": the song plays in Liked Songs
    property bool removable: false
    property color green: "#1ed760"

    readonly property bool song: kind === "track"
    readonly property bool nowPlaying: song && player && player.trackURI === uri
    readonly property bool hovering: area.containsMouse
    readonly property bool queued: song && queue && queue.count >= 0 && queue.contains(uri)
    signal opened
    signal removed
    signal openArtist(int artistIndex)
    signal openAlbum

    height: 40

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: 6
        anchors.rightMargin: 6
        radius: 8
        color: Qt.rgba(1, 1, 1, row.hovering ? 0.08 : (row.view && row.view.pendingClick === row.itemID ? 0.05 : 0))
    }
    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onClicked: mouse => {
            if (mouse.button === Qt.RightButton) {
                if (row.song)
                    menu.popup()
            } else if (row.song) {
                row.view.rowClicked(row.model, row.index, row.context)
            } else {
                row.opened()
            }
        }
    }
    Item {
        id: lead
        x: 14
        width: 24
        height: parent.height
        NowPlayingBars {
            anchors.centerIn: parent
            visible: row.nowPlaying
            playing: row.player ? row.player.isPlaying : false
            color: row.green
        }
        Text {
            anchors.centerIn: parent
            visible: row.numbered && !row.nowPlaying
            text: row.index + 1
            color: Qt.rgba(1, 1, 1, 0.5)
            font.pixelSize: 11
        }
        CoverImage {
            anchors.centerIn: parent
            width: 24
            height: 24
            visible: !row.numbered && !row.nowPlaying
            url: row.image ? row.image : ""
            symbol: row.kind === "artist" ? "☺" : "♪"
        }
    }
    Column {
        anchors.left: lead.right
        anchors.leftMargin: 10
        anchors.right: controls.left
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        Text {
            width: parent.width
            text: row.name
            color: row.nowPlaying ? row.green : "white"
            font.pixelSize: 13
            elide: Text.ElideRight
        }
        Text {
            width: parent.width
            visible: text !== ""
            text: row.subtitle
            color: Qt.rgba(1, 1, 1, 0.55)
            font.pixelSize: 11
            elide: Text.ElideRight
        }
    }
    Row {
        id: controls
        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4
        LibraryButton {
            visible: row.song && (row.hovering || row.queued)
            width: 24
            text: row.queued ? "✓" : "+"
            help: row.queued ? "Remove from MIRL queue" : "Add to MIRL queue"
            Accessible.name: row.queued ? "Remove from queue" : "Add to queue"
            ink: row.queued ? row.green : Qt.rgba(1, 1, 1, 0.7)
            color: "transparent"
            enabledState: !row.queue.busy
            onClicked: row.queue.toggleSong(row.model.get(row.index))
        }
        LibraryButton {
            visible: row.song
            width: 24
            text: row.liked === true ? "♥" : "♡"
            fontSize: 13
            color: "transparent"
            ink: row.liked === true ? row.green : Qt.rgba(1, 1, 1, 0.5)
            help: row.liked === undefined ? "Checking your saved songs…"
                : row.liked ? "Remove from Liked Songs" : "Add to Liked Songs"
            onClicked: row.view.toggleLike(row.model, row.index)
        }
        LibraryButton {
            visible: row.removable
            width: 24
            text: "✕"
            color: "transparent"
            ink: Qt.rgba(1, 1, 1, 0.5)
            help: "Remove from recent searches"
            onClicked: row.removed()
        }
    }
    Menu {
        id: menu
        MenuItem {
            text: "Add to Queue"
            onTriggered: row.queue.toggleSong(row.model.get(row.index))
        }
        MenuItem {
            text: "Open album"
            enabled: !!row.albumURI
            onTriggered: row.openAlbum()
        }
        Instantiator {
            model: row.artistNames
            delegate: MenuItem {
                required property int index
                required property string modelData
                text: modelData
                onTriggered: row.openArtist(index)
            }
            onObjectAdded: (index, object) => menu.insertItem(index + 2, object)
            onObjectRemoved: (index, object) => menu.removeItem(object)
        }
    }
    Accessible.role: Accessible.Button
    Accessible.name: !row.song ? "Open " + row.name
                               : (row.nowPlaying ? "Now playing: " : "Play ") + row.name + ", " + row.subtitle
}
