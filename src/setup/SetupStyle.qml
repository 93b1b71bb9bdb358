pragma Singleton
import QtQuick

// The assistant's colours and type: dark and quiet like the settings window, with one accent.
QtObject {
    readonly property color windowColour: "#18181b"
    readonly property color railColour: "#1f1f23"
    readonly property color cardColour: "#26262b"
    readonly property color cardRaised: "#2e2e34"
    readonly property color separatorColour: "#35353c"
    readonly property color textColour: "#f2f2f5"
    readonly property color secondaryText: "#a3a3ad"
    readonly property color tertiaryText: "#74747e"
    readonly property color accentColour: "#4f8cff"
    readonly property color warningColour: "#ffb340"
    readonly property color goodColour: "#3ccf6e"
    readonly property color heartColour: "#1ed760"
    readonly property int titleSize: 26
    readonly property int bodySize: 14
    readonly property int smallSize: 12
}
