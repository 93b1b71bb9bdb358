import QtQuick
import MirlPlayer.Surface

// The live levels of the player's own audio as plain bars, low notes on the left. The bars stay
// and only change height.
Row {
    id: bars
    objectName: "levelBars"
    property var store: null
    property color ink: "white"
    property bool active: true
    property int count: 32
    spacing: 2

    LevelBins {
        id: bins
        count: bars.count
        store: bars.store
        active: bars.active
    }
    Repeater {
        model: bins.count
        Rectangle {
            required property int index
            readonly property real level: bins.levels[index] || 0
            width: (bars.width - bars.spacing * (bars.count - 1)) / bars.count
            height: Math.max(2, level * bars.height)
            anchors.bottom: parent.bottom
            radius: Math.min(width / 2, 2)
            color: bars.ink
            opacity: 0.55 + 0.45 * level
        }
    }
}
