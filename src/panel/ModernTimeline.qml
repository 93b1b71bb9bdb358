import QtQuick
import MirlPlayer.Surface

// A hairline with a round knob; times at the ends.
Item {
    readonly property var bar: parent.host
    Rectangle {
        id: line
        x: 0
        y: 6
        width: parent.width
        height: 2
        radius: 1
        color: Qt.rgba(bar.ink.r, bar.ink.g, bar.ink.b, 0.22)
        Rectangle {
            width: parent.width * bar.fraction
            height: parent.height
            radius: 1
            color: bar.tint
        }
    }
    Rectangle {
        width: bar.hovered ? 12 : 9
        height: width
        radius: width / 2
        x: line.width * bar.fraction - width / 2
        y: line.y + 1 - height / 2
        color: bar.tint
        visible: bar.model.enabled
    }
    TimeLabels { bar: parent.bar }
}
