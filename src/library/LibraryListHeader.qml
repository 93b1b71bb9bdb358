import QtQuick
import QtQuick.Controls

// The top of the list pane: back and the title, the queue button, the Spotify link and the way
// back to the player; below them the search field with its kinds, or the list's filter field,
// which slips away while the list scrolls down.
Column {
    id: header
    required property var browser
    required property var view
    required property var queue
    required property var player
    property bool filterHidden: false
    property bool searching: browser.tab === "Search" && browser.routes.length === 0
    property bool filterable: !searching && !view.showingQueue && browser.list.count > 0
                              && !(browser.routes.length > 0 && browser.routes[browser.routes.length - 1].kind === "artist")
    readonly property alias playerControl: playerButton
    property color green: "#1ed760"
    signal editingFinished

    spacing: 6
    Item {
        width: header.width
        height: 28
        LibraryButton {
            id: back
            visible: header.browser.routes.length > 0 && !header.view.showingQueue
            anchors.verticalCenter: parent.verticalCenter
            width: 26
            text: "‹"
            fontSize: 16
            help: "Back"
            onClicked: header.browser.goBack()
        }
        Text {
            anchors.left: back.visible ? back.right : parent.left
            anchors.leftMargin: back.visible ? 8 : 2
            anchors.right: buttons.left
            anchors.rightMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            // An artist's page shows the name large itself.
            readonly property var route: header.browser.routes.length > 0
                                         ? header.browser.routes[header.browser.routes.length - 1] : null
            text: header.view.showingQueue ? "Queue" : route && route.kind === "artist" ? "" : header.browser.title
            color: "white"
            font.pixelSize: 16
            font.weight: Font.Bold
            elide: Text.ElideRight
        }
        Row {
            id: buttons
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            spacing: 6
            LibraryButton {
                objectName: "queueButton"
                text: header.queue.count > 0 ? "≡  Queue " + header.queue.count : "≡  Queue"
                help: "View and edit the MIRL queue"
                ink: header.view.showingQueue ? header.green : Qt.rgba(1, 1, 1, 0.85)
                onClicked: header.view.showingQueue = !header.view.showingQueue
            }
            LibraryButton {
                width: 26
                text: "↗"
                help: "Open Spotify"
                onClicked: header.player.openSpotify("")
            }
            LibraryButton {
                id: playerButton
                objectName: "playerButton"
                text: "⤡  Player"
                help: "Hover or click to return to player (Escape)"
                onClicked: header.view.closeRequested()
                onHoverMoved: at => header.view.playerHover(at)
                onHoverEnded: header.view.playerHoverEnded()
            }
        }
    }
    // Search: the field, then the kinds.
    Column {
        visible: header.searching
        width: header.width
        spacing: 6
        LibraryField {
            id: search
            objectName: "searchField"
            width: header.width
            placeholder: "Songs, artists or albums"
            text: header.browser.query
            onEdited: value => header.browser.query = value
        }
        Row {
            spacing: 6
            Repeater {
                model: [["track", "Songs"], ["artist", "Artists"], ["album", "Albums"]]
                LibraryButton {
                    required property var modelData
                    text: modelData[1]
                    ink: header.browser.searchKind === modelData[0] ? "black" : Qt.rgba(1, 1, 1, 0.85)
                    color: header.browser.searchKind === modelData[0] ? "white" : Qt.rgba(1, 1, 1, hovered ? 0.16 : 0.08)
                    onClicked: header.browser.searchKind = modelData[0]
                }
            }
        }
    }
    // The filter over the list shown, which slips away on the way down.
    Item {
        width: header.width
        height: header.filterable && !header.filterHidden ? 30 : 0
        clip: true
        visible: height > 0
        Behavior on height { NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        LibraryField {
            objectName: "filterField"
            width: parent.width
            placeholder: "Filter"
            text: header.browser.filter
            onEdited: value => header.browser.filter = value
        }
    }

    component LibraryField: Rectangle {
        id: field
        property string placeholder
        property alias text: input.text
        signal edited(string value)
        height: 28
        radius: 8
        color: Qt.rgba(1, 1, 1, input.activeFocus ? 0.14 : 0.08)
        border.width: input.activeFocus ? 1 : 0
        border.color: Qt.rgba(1, 1, 1, 0.25)
        Text {
            x: 10
            anchors.verticalCenter: parent.verticalCenter
            text: "⌕"
            color: Qt.rgba(1, 1, 1, 0.5)
            font.pixelSize: 13
        }
        TextInput {
            id: input
            x: 28
            width: parent.width - 36
            anchors.verticalCenter: parent.verticalCenter
            color: "white"
            selectionColor: header.green
            font.pixelSize: 12
            clip: true
            onTextEdited: field.edited(text)
            // Esc first empties the field, then gives the keyboard back.
            Keys.onEscapePressed: event => {
                if (text !== "") {
                    text = ""
                    field.edited("")
                } else {
                    focus = false
                }
            }
            Keys.onReturnPressed: focus = false
            Text {
                visible: input.text === ""
                text: field.placeholder
                color: Qt.rgba(1, 1, 1, 0.4)
                font.pixelSize: 12
            }
        }
    }
}
