import QtQuick

// The tiny meter of the resting pill: four capsules for the four lowest bands, resting at a fifth
// of the height in silence, easing to each new level over 0.1 s.
Row {
    id: meter
    property var levels: []
    property color color: "white"
    spacing: 2

    Repeater {
        model: 4
        Rectangle {
            required property int index
            readonly property real level: index < meter.levels.length ? meter.levels[index] : 0.1
            width: (meter.width - meter.spacing * 3) / 4
            height: Math.max((level * 0.8 + 0.2) * meter.height, 3)
            anchors.verticalCenter: parent.verticalCenter
            radius: width / 2
            color: meter.color
            opacity: 0.9
            Behavior on height { NumberAnimation { duration: 100; easing.type: Easing.OutQuad } }
        }
    }
}
