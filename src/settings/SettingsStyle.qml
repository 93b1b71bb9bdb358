pragma Singleton
import QtQuick

// The window's colours: dark and quiet, of a piece with the panel.
QtObject {
    readonly property color windowColour: "#1b1b1e"
    readonly property color sidebarColour: "#232327"
    readonly property color cardColour: "#2a2a2f"
    readonly property color separatorColour: "#3a3a40"
    readonly property color textColour: "#f2f2f5"
    readonly property color secondaryText: "#a3a3ad"
    readonly property color accentColour: "#4f8cff"
    readonly property color warningColour: "#ffb340"
    readonly property color goodColour: "#3ccf6e"

}
