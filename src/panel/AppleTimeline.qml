import QtQuick
import MirlPlayer.Surface

// A rounded bar that thickens under the pointer, with the times beneath its ends.
Item {
    readonly property var bar: parent.host
    Rectangle {
        id: track
        width: parent.width
        y: 4
        height: bar.hovered ? 7 : 5
        radius: height / 2
        color: Qt.rgba(bar.ink.r, bar.ink.g, bar.ink.b, 0.2)
        Behavior on height { NumberAnimation { duration: 120; easing.type: Easing.OutQuad } }
        Rectangle {
            width: parent.width * bar.fraction
            height: parent.height
            radius: parent.radius
            color: bar.ink
        }
    }
    TimeLabels { bar: parent.bar }
}
