import QtQuick

// Three small bars that bounce while the song plays and rest when it pauses.
Row {
    id: bars
    property bool playing: false
    property color color: "#1ed760"
    spacing: 2
    height: 10
    Repeater {
        model: 3
        Rectangle {
            required property int index
            width: 2
            radius: 1
            anchors.bottom: parent.bottom
            color: bars.color
            height: 3
            SequentialAnimation on height {
                running: bars.playing && bars.visible
                loops: Animation.Infinite
                NumberAnimation { to: 10; duration: 260 + index * 90; easing.type: Easing.InOutQuad }
                NumberAnimation { to: 3; duration: 260 + index * 90; easing.type: Easing.InOutQuad }
            }
        }
    }
}
