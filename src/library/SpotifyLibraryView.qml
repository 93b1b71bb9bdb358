import QtQuick
import MirlPlayer.Library
import MirlPlayer.Playback

// What the open panel shows below its header bar while the library is open: the sidebar of
// shortcuts and the list pane, with the banners of playback. The bar itself (art, title,
// timeline, transport) is the card's, in its "bar." places. Binds to the browser and to the
// view's rules; every decision lives in C++.
Item {
    id: library
    objectName: "spotifyLibraryView"
    property var player: null
    property var panel: null
    readonly property color green: "#1ed760"
    readonly property var browser: SpotifyBrowser

    LibraryViewModel {
        id: rules
        objectName: "libraryRules"
        player: library.player
        window: library.Window.window // Esc anywhere in it returns to the player
        onCloseRequested: if (library.panel) library.panel.requestLibrary(false)
    }

    Component.onCompleted: {
        SpotifyBrowser.appear()
        rules.barAppeared(Qt.rect(0, 0, 0, 0))
        Qt.callLater(() => {
            const p = pane.header.playerControl
            const at = p.mapToGlobal(0, 0)
            rules.barAppeared(Qt.rect(at.x, at.y, p.width, p.height))
        })
    }
    Component.onDestruction: {
        rules.disappear()
        SpotifyBrowser.disappear()
    }

    Item {
        id: signedIn
        anchors.fill: parent
        visible: rules.connected && !rules.justConnected

        LibrarySidebar {
            id: sidebar
            objectName: "sidebar"
            y: 4
            width: 176
            height: parent.height - 8
            browser: library.browser
            view: rules
            space: library
            green: library.green
        }
        Rectangle {
            x: sidebar.width
            y: 10
            width: 1
            height: parent.height - 20
            color: Qt.rgba(1, 1, 1, 0.08)
        }
        LibraryListPane {
            id: pane
            objectName: "listPane"
            x: sidebar.width + 1
            width: parent.width - x
            height: parent.height
            browser: library.browser
            view: rules
            queue: SongQueue
            player: library.player
            green: library.green
        }
    }

    // Not signed in: the way to Spotify; and the moment after signing in here.
    LibraryState {
        anchors.centerIn: parent
        visible: !rules.connected || rules.justConnected
        title: rules.justConnected ? "Spotify is connected."
             : rules.connecting ? "Waiting for Spotify…" : "Your music, a little closer."
        detail: rules.justConnected || rules.connecting ? ""
              : "Connect Spotify to browse your playlists, liked songs and favourite artists right here."
        action: rules.justConnected ? "Back to library" : rules.connecting ? "Cancel" : "Set up Spotify"
        onActionClicked: rules.justConnected ? rules.backToLibrary()
                       : rules.connecting ? rules.cancelSetup() : rules.beginSetup()
    }

    // The banner of a failed play or like.
    Rectangle {
        objectName: "banner"
        visible: rules.banner !== ""
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 12
        width: Math.min(parent.width - 40, bannerRow.implicitWidth + 24)
        height: 36
        radius: 12
        color: Qt.rgba(0.12, 0.12, 0.13, 0.96)
        border.color: Qt.rgba(1, 1, 1, 0.12)
        Row {
            id: bannerRow
            anchors.centerIn: parent
            spacing: 10
            Text {
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, 440)
                text: rules.banner
                color: "white"
                font.pixelSize: 12
                elide: Text.ElideRight
            }
            LibraryButton {
                anchors.verticalCenter: parent.verticalCenter
                height: 22
                text: rules.bannerAction
                onClicked: rules.bannerActionClicked()
            }
        }
    }

    // The pin being dragged follows the pointer; red-tinted when a drop would remove it.
    Rectangle {
        visible: rules.dragged !== ""
        x: rules.pointer.x - 20
        y: rules.pointer.y - 14
        width: 150
        height: 28
        radius: 8
        color: rules.dropRemoves ? Qt.rgba(0.55, 0.15, 0.15, 0.9) : Qt.rgba(1, 1, 1, 0.16)
        border.color: Qt.rgba(1, 1, 1, 0.2)
        Text {
            anchors.fill: parent
            anchors.leftMargin: 10
            anchors.rightMargin: 10
            verticalAlignment: Text.AlignVCenter
            text: (rules.dropRemoves ? "Remove " : "") + library.draggedName()
            color: "white"
            font.pixelSize: 12
            elide: Text.ElideRight
        }
    }
    function draggedName() {
        for (const s of library.browser.shortcuts)
            if (s.id === rules.dragged)
                return s.name
        return ""
    }
}
