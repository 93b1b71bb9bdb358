import QtQuick
import MirlPlayer.Surface

// An LCD: a row of segments lit up to the position, the times in a segment face above.
Item {
    id: retro
    readonly property var bar: parent.host
    readonly property int segments: Math.max(8, Math.floor(width / 6))
    Rectangle {
        anchors.fill: parent
        radius: 2
        color: Qt.rgba(bar.tint.r, bar.tint.g, bar.tint.b, 0.08)
        border.color: Qt.rgba(bar.tint.r, bar.tint.g, bar.tint.b, 0.3)
        border.width: 1
    }
    Row {
        x: 4
        y: 4
        spacing: 2
        Repeater {
            model: retro.segments
            Rectangle {
                required property int index
                width: (retro.width - 8 - 2 * (retro.segments - 1)) / retro.segments
                height: 7
                color: retro.bar.tint
                opacity: (index + 0.5) / retro.segments <= retro.bar.fraction ? 1 : 0.14
            }
        }
    }
    TimeLabels {
        bar: retro.bar
        anchors.leftMargin: 4
        anchors.rightMargin: 4
        ink: retro.bar.tint
        size: 10
    }
}
