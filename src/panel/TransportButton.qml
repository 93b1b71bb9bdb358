import QtQuick
import QtQuick.Shapes
import MirlPlayer.Surface

// One transport control: its command, its accessible name, and its growth under the pointer are
// the same in every style; the piece it is drawn as comes from the style.
Item {
    id: button
    required property string action // "previous", "playPause" or "next"
    required property var player
    required property var theme
    required property var style

    readonly property bool main: action === "playPause"
    readonly property string symbol: main ? (player.isPlaying ? "pause" : "play") : action
    readonly property string label: action === "previous" ? "Previous track"
                                  : action === "next" ? "Next track"
                                  : player.isPlaying ? "Pause" : "Play"
    readonly property bool hover: area.containsMouse
    readonly property color ink: theme.inkColor
    readonly property color tint: style.tint !== "" ? style.tint : ink
    readonly property string piece: style.id === "cassette" ? "cassette" : style.piece

    signal clicked
    function activate() {
        if (action === "previous")
            player.previous()
        else if (action === "next")
            player.next()
        else
            player.togglePlayPause()
        clicked()
    }

    width: drawing.item ? drawing.item.width : 28
    height: drawing.item ? drawing.item.height : 28
    scale: hover ? style.hoverScale : 1
    Behavior on scale { NumberAnimation { duration: 120; easing.type: Easing.OutQuad } }
    opacity: area.pressed ? 0.6 : 1

    Loader {
        id: drawing
        sourceComponent: {
            switch (button.piece) {
            case "pixel": return pixelPiece
            case "circle": return circlePiece
            case "chip": return chipPiece
            case "designer": return designerPiece
            case "cassette": return cassettePiece
            default: return symbolPiece
            }
        }
    }

    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        cursorShape: Qt.PointingHandCursor
        onClicked: button.activate()
    }

    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.onPressAction: button.activate()

    Component {
        id: symbolPiece
        Item {
            width: button.main ? 34 : 28
            height: 34
            SymbolGlyph {
                anchors.centerIn: parent
                kind: button.symbol
                size: button.main ? 22 : 15
                ink: button.ink
            }
        }
    }
    Component {
        id: circlePiece
        Rectangle {
            width: button.main ? 36 : 28
            height: width
            radius: width / 2
            color: button.main ? button.ink : Qt.rgba(button.ink.r, button.ink.g, button.ink.b, button.hover ? 0.2 : 0.1)
            SymbolGlyph {
                anchors.centerIn: parent
                anchors.horizontalCenterOffset: button.symbol === "play" ? 1 : 0
                kind: button.symbol
                size: button.main ? 14 : 11
                ink: button.main ? "black" : button.ink
            }
        }
    }
    Component {
        id: pixelPiece
        Grid {
            readonly property real box: button.main ? 21 : 14
            readonly property var bits: SurfaceGeometry.pixelGlyph(button.symbol === "previous" ? "prev" : button.symbol)
            width: box
            height: box
            columns: 7
            Repeater {
                model: 49
                Rectangle {
                    required property int index
                    width: parent.box / 7
                    height: parent.box / 7
                    color: parent.bits[index] ? button.tint : "transparent"
                }
            }
        }
    }
    Component {
        id: chipPiece
        Rectangle {
            width: button.main ? 44 : 36
            height: 26
            radius: button.style.chipRadius
            color: Qt.rgba(button.tint.r, button.tint.g, button.tint.b, button.hover ? 0.22 : 0.12)
            border.color: Qt.rgba(button.tint.r, button.tint.g, button.tint.b, 0.55)
            SymbolGlyph { anchors.centerIn: parent; kind: button.symbol; size: 12; ink: button.tint }
        }
    }
    Component {
        id: designerPiece
        Item {
            width: button.main ? 40 : 32
            height: 28
            Rectangle {
                anchors.fill: parent
                visible: button.style.chip === "rounded"
                radius: button.style.chipRadius
                color: Qt.rgba(button.tint.r, button.tint.g, button.tint.b, button.hover ? 0.2 : 0.08)
                border.color: Qt.rgba(button.tint.r, button.tint.g, button.tint.b, 0.4)
            }
            Shape {
                anchors.fill: parent
                visible: button.style.chip === "cutCorner"
                ShapePath {
                    strokeWidth: 1
                    strokeColor: Qt.rgba(button.tint.r, button.tint.g, button.tint.b, 0.65)
                    fillColor: Qt.rgba(button.tint.r, button.tint.g, button.tint.b, button.hover ? 0.18 : 0.05)
                    PathSvg { path: SurfaceGeometry.cutCornerPath(button.main ? 40 : 32, 28, 6) }
                }
            }
            SymbolGlyph {
                anchors.centerIn: parent
                kind: button.symbol
                size: button.main ? 15 : 12
                ink: button.tint
                light: button.style.symbolWeight === "ultraLight"
            }
        }
    }
    // The cassette deck's piano keys.
    Component {
        id: cassettePiece
        Rectangle {
            width: 40
            height: 26
            radius: button.style.chipRadius
            gradient: Gradient {
                GradientStop { position: 0; color: button.hover ? "#f2f2f2" : "#d9d9d9" }
                GradientStop { position: 1; color: "#8d8d8d" }
            }
            border.color: "#4a4a4a"
            SymbolGlyph { anchors.centerIn: parent; kind: button.symbol; size: 11; ink: "#222" }
        }
    }
}
