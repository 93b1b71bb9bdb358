import QtQuick
import MirlPlayer.Visualizers

// The tiny meter of the resting pill: four capsules for the four lowest bands, resting at a fifth
// of the height in silence, easing to each new level over 0.1 s. The ease moves in whole device
// pixels, on the frames the level arrays draw anyway, and rests on its target when it ends
// (PixelEase), so the meter adds no frame of its own while the music moves it.
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
            PixelEase {
                id: ease
                target: Math.max((level * 0.8 + 0.2) * meter.height, 3)
                step: 1 / Screen.devicePixelRatio
                duration: 0.1
            }
            width: (meter.width - meter.spacing * 3) / 4
            height: ease.value
            anchors.verticalCenter: parent.verticalCenter
            radius: width / 2
            color: meter.color
            opacity: 0.9
        }
    }
}
