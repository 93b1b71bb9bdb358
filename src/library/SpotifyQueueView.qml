import QtQuick

// The page of MIRL's own song queue: the songs to come, in order, each to move or remove, and a
// button that plays the next one now.
Item {
    id: page
    required property var queue
    required property var player
    signal close

    Column {
        id: top
        width: parent.width
        spacing: 6
        Item {
            width: parent.width
            height: 24
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: page.queue.count
                color: Qt.rgba(1, 1, 1, 0.6)
                font.pixelSize: 12
            }
            Row {
                anchors.right: parent.right
                spacing: 6
                LibraryButton {
                    visible: page.queue.count > 0
                    text: "Play next"
                    prominent: true
                    enabledState: !page.queue.busy
                    onClicked: page.queue.playNext()
                }
                LibraryButton {
                    text: "Clear"
                    visible: page.queue.count > 0
                    onClicked: page.queue.clear()
                }
                LibraryButton {
                    width: 26
                    text: "✕"
                    help: "Back to library"
                    onClicked: page.close()
                }
            }
        }
        Text {
            width: parent.width
            text: page.queue.caption
            color: Qt.rgba(1, 1, 1, 0.55)
            font.pixelSize: 11
            wrapMode: Text.WordWrap
        }
        Text {
            visible: page.queue.error !== ""
            width: parent.width
            text: page.queue.error
            color: "orange"
            font.pixelSize: 11
            wrapMode: Text.WordWrap
        }
    }
    Text {
        anchors.centerIn: list
        visible: page.queue.count === 0
        text: page.queue.emptyText
        color: Qt.rgba(1, 1, 1, 0.6)
        font.pixelSize: 12
    }
    ListView {
        id: list
        anchors.top: top.bottom
        anchors.topMargin: 8
        anchors.bottom: parent.bottom
        width: parent.width
        clip: true
        model: page.queue.tracks
        delegate: Item {
            id: row
            required property int index
            required property var modelData
            width: list.width
            height: 38
            Text {
                width: 22
                anchors.verticalCenter: parent.verticalCenter
                text: row.index + 1
                color: Qt.rgba(1, 1, 1, 0.5)
                font.pixelSize: 11
            }
            CoverImage { x: 24; width: 24; height: 24; anchors.verticalCenter: parent.verticalCenter }
            Column {
                x: 58
                width: parent.width - 58 - actions.width - 8
                anchors.verticalCenter: parent.verticalCenter
                Text { width: parent.width; text: row.modelData.title; color: "white"; font.pixelSize: 13; elide: Text.ElideRight }
                Text { width: parent.width; text: row.modelData.subtitle; color: Qt.rgba(1, 1, 1, 0.55); font.pixelSize: 11; elide: Text.ElideRight }
            }
            Row {
                id: actions
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                spacing: 4
                LibraryButton { width: 24; text: "˄"; help: "Move up"; color: "transparent"; enabledState: row.index > 0 && !page.queue.busy; onClicked: page.queue.moveAt(row.index, -1) }
                LibraryButton { width: 24; text: "˅"; help: "Move down"; color: "transparent"; enabledState: row.index < page.queue.count - 1 && !page.queue.busy; onClicked: page.queue.moveAt(row.index, 1) }
                LibraryButton { width: 24; text: "−"; help: "Remove from queue"; color: "transparent"; enabledState: !page.queue.busy; onClicked: page.queue.removeAt(row.index) }
            }
        }
    }
}
