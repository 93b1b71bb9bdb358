import QtQuick
import MirlPlayer.Surface

// The resting pill's one indicator in its 20 x 11 box: with the visualizer on, a miniature
// spectrum in the accent; without it, the play state. Enters and leaves scaling about its centre.
ContentFade {
    id: pill
    required property var player
    width: 20
    height: 11
    hiddenScale: 1.2
    enterDelay: 0
    enterDuration: 0.2
    leaveDuration: 0.15

    readonly property bool miniature: theme.showVisualizer

    LevelBins {
        id: bins
        count: 5
        store: pill.player.eqStore
        active: pill.miniature && pill.shown
    }
    // The visualizer's place in the pill.
    Row {
        objectName: "pillVisualizerSlot"
        anchors.fill: parent
        spacing: 2
        visible: pill.miniature
        Repeater {
            model: bins.count
            Rectangle {
                required property int index
                width: 2.4
                height: Math.max(2, (bins.levels[index] || 0) * 11)
                radius: 1.2
                anchors.bottom: parent.bottom
                color: pill.theme.inkColor
            }
        }
    }
    SymbolGlyph {
        anchors.centerIn: parent
        visible: !pill.miniature
        kind: pill.player.isPlaying ? "pause" : "play"
        size: 9
        ink: pill.theme.inkColor
        Accessible.role: Accessible.Indicator
        Accessible.name: pill.player.isPlaying ? "Playing" : "Paused"
    }
}
