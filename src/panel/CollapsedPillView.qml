import QtQuick
import MirlPlayer.Surface
import MirlPlayer.Visualizers

// The resting pill's one indicator in its 20 x 11 box: with the visualizer on, a miniature
// spectrum in the accent; without it, the play state. Enters and leaves scaling about its centre.
ContentFade {
    id: pill
    required property var player
    // False while another layer shows the pill: the meter then rests and draws nothing.
    property bool live: true
    width: 20
    height: 11
    hiddenScale: 1.2
    enterDelay: 0
    enterDuration: 0.2
    leaveDuration: 0.15

    readonly property bool miniature: theme.showVisualizer

    // The visualizer's place in the pill.
    MiniEQ {
        objectName: "pillVisualizerSlot"
        anchors.fill: parent
        visible: pill.miniature
        levels: pill.miniature && pill.shown && pill.live && pill.player.eqStore ? pill.player.eqStore.levels : []
        color: pill.theme.inkColor
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
