import QtQuick
import MirlPlayer.Surface

// The card's timeline: the same behaviour in every style (the clock's position, a drag that
// shows the fraction under the pointer, a seek on release, nothing with no duration), drawn by
// the style's own timeline.
Item {
    id: bar
    required property var player
    required property var theme
    required property var style

    readonly property alias model: timeline
    readonly property real fraction: timeline.fraction
    readonly property color ink: theme.inkColor
    readonly property color tint: style.tint !== "" ? style.tint : ink
    readonly property bool hovered: area.containsMouse || area.pressed
    readonly property string fontFamily: style.monospace ? "monospace" : Qt.application.font.family

    TimelineModel {
        id: timeline
        player: bar.player
        shown: bar.visible
    }

    Loader {
        id: drawing
        anchors.fill: parent
        readonly property var host: bar
        source: {
            switch (bar.style.timeline) {
            case "retro": return "RetroTimeline.qml"
            case "modern": return "ModernTimeline.qml"
            case "vintage": return "VintageTimeline.qml"
            case "pioneer": return "PioneerTimeline.qml"
            case "cassette": return "CassetteTimeline.qml"
            case "designer": return "DesignerTimeline.qml"
            default: return "AppleTimeline.qml"
            }
        }
    }

    MouseArea {
        id: area
        objectName: "timelineArea"
        anchors.fill: parent
        enabled: timeline.enabled
        hoverEnabled: true
        preventStealing: true
        onPressed: mouse => timeline.drag(mouse.x, width)
        onPositionChanged: mouse => { if (pressed) timeline.drag(mouse.x, width) }
        onReleased: timeline.release()
        onCanceled: timeline.cancel()
    }

    Accessible.role: Accessible.Slider
    Accessible.name: "Playback position"
    Accessible.description: timeline.elapsedText + " of " + timeline.durationText
}
