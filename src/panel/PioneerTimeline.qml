import QtQuick
import MirlPlayer.Surface

// A deck's strip: the track as a row of bars, played part lit, a cursor at the position.
Item {
    id: deck
    readonly property var bar: parent.host
    readonly property int columns: Math.max(16, Math.floor(width / 3))
    Row {
        y: 0
        height: 14
        spacing: 1
        Repeater {
            model: deck.columns
            Rectangle {
                required property int index
                // A fixed ragged profile, like the overview of a track's loudness.
                readonly property real shape: 0.35 + 0.65 * Math.abs(Math.sin(index * 1.7) * Math.cos(index * 0.37))
                width: (deck.width - (deck.columns - 1)) / deck.columns
                height: 14 * shape
                anchors.bottom: parent.bottom
                color: (index + 0.5) / deck.columns <= deck.bar.fraction
                       ? deck.bar.tint : Qt.rgba(deck.bar.ink.r, deck.bar.ink.g, deck.bar.ink.b, 0.25)
            }
        }
    }
    Rectangle {
        x: deck.width * deck.bar.fraction - 1
        y: -1
        width: 2
        height: 16
        color: "white"
        visible: deck.bar.model.enabled
    }
    TimeLabels { bar: deck.bar; ink: deck.bar.tint; size: 9 }
}
