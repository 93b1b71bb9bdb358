import QtQuick
import MirlPlayer.Surface

// A piece of content that enters with an ease-out after a short delay and leaves with a quicker
// ease-in, each time shortened by the theme's motion speed. Optionally it also scales about its
// centre, as the resting pill's content does.
Item {
    id: fade
    property bool shown: true
    property var theme
    property real enterDelay: 0.1
    property real enterDuration: 0.24
    property real leaveDuration: 0.11
    // The scale the content comes from and goes to; 1 means opacity alone.
    property real hiddenScale: 1

    visible: opacity > 0
    state: shown ? "in" : "out"
    states: [
        State { name: "in"; PropertyChanges { target: fade; opacity: 1; scale: 1 } },
        State { name: "out"; PropertyChanges { target: fade; opacity: 0; scale: fade.hiddenScale } }
    ]
    transitions: [
        Transition {
            to: "in"
            SequentialAnimation {
                PauseAnimation { duration: fade.theme ? fade.theme.motionMs(fade.enterDelay) : 0 }
                NumberAnimation {
                    properties: "opacity,scale"
                    duration: fade.theme ? fade.theme.motionMs(fade.enterDuration) : 0
                    easing.type: Easing.OutQuad
                }
            }
        },
        Transition {
            to: "out"
            NumberAnimation {
                properties: "opacity,scale"
                duration: fade.theme ? fade.theme.motionMs(fade.leaveDuration) : 0
                easing.type: Easing.InQuad
            }
        }
    ]
}
