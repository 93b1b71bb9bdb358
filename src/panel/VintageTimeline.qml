import QtQuick
import MirlPlayer.Surface

// A cream groove with tick marks and a brass slider.
Item {
    id: vintage
    readonly property var bar: parent.host
    Rectangle {
        id: groove
        y: 5
        width: parent.width
        height: 4
        radius: 2
        color: Qt.rgba(0, 0, 0, 0.45)
        border.color: Qt.rgba(bar.tint.r, bar.tint.g, bar.tint.b, 0.45)
        border.width: 1
    }
    Repeater {
        model: 11
        Rectangle {
            required property int index
            x: index * (vintage.width - 1) / 10
            y: 12
            width: 1
            height: index % 5 === 0 ? 4 : 2
            color: Qt.rgba(vintage.bar.tint.r, vintage.bar.tint.g, vintage.bar.tint.b, 0.55)
        }
    }
    Rectangle {
        width: 8
        height: 14
        radius: 2
        x: groove.width * vintage.bar.fraction - width / 2
        y: groove.y + 2 - height / 2
        gradient: Gradient {
            GradientStop { position: 0; color: Qt.lighter(vintage.bar.tint, 1.15) }
            GradientStop { position: 1; color: Qt.darker(vintage.bar.tint, 1.6) }
        }
        visible: vintage.bar.model.enabled
    }
    TimeLabels { bar: vintage.bar; ink: vintage.bar.tint; size: 9 }
}
