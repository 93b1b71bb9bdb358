import QtQuick
import QtQuick.Shapes
import MirlPlayer.Surface

// The timeline of the designer styles, one drawing with a branch for each: a neon line with its
// glow (noir), a framed row of dashes with cut corners (cyber), a chunky rounded meter (studio).
Item {
    id: designer
    readonly property var bar: parent.host
    readonly property string kind: bar.style.id
    readonly property color tint: bar.tint

    // noir
    Item {
        anchors.fill: parent
        visible: designer.kind === "noir"
        Rectangle {
            y: 3
            width: parent.width * designer.bar.fraction
            height: 7
            radius: 3.5
            color: designer.tint
            opacity: 0.25
        }
        Rectangle {
            y: 5.5
            width: parent.width
            height: 1
            color: Qt.rgba(designer.tint.r, designer.tint.g, designer.tint.b, 0.25)
        }
        Rectangle {
            y: 5
            width: parent.width * designer.bar.fraction
            height: 2
            radius: 1
            color: designer.tint
        }
    }

    // cyber
    Item {
        anchors.fill: parent
        visible: designer.kind === "cyber"
        readonly property int dashes: Math.max(10, Math.floor(width / 7))
        Shape {
            width: parent.width
            height: 12
            ShapePath {
                strokeWidth: 1
                strokeColor: Qt.rgba(designer.tint.r, designer.tint.g, designer.tint.b, 0.65)
                fillColor: Qt.rgba(designer.tint.r, designer.tint.g, designer.tint.b, 0.05)
                PathSvg { path: SurfaceGeometry.cutCornerPath(designer.width, 12, 4) }
            }
        }
        Row {
            x: 4
            y: 3
            spacing: 2
            Repeater {
                model: parent.parent.dashes
                Rectangle {
                    required property int index
                    readonly property int count: parent.parent.dashes
                    width: (designer.width - 8 - 2 * (count - 1)) / count
                    height: 6
                    color: designer.tint
                    opacity: (index + 0.5) / count <= designer.bar.fraction ? 0.95 : 0.12
                }
            }
        }
    }

    // studio
    Item {
        anchors.fill: parent
        visible: designer.kind === "studio"
        Rectangle {
            y: 2
            width: parent.width
            height: 9
            radius: 5
            color: Qt.rgba(1, 1, 1, 0.1)
            border.color: Qt.rgba(1, 1, 1, 0.18)
            Rectangle {
                x: 1.5
                y: 1.5
                width: Math.max(0, (parent.width - 3) * designer.bar.fraction)
                height: parent.height - 3
                radius: 3.5
                gradient: Gradient {
                    orientation: Gradient.Horizontal
                    GradientStop { position: 0; color: Qt.darker(designer.tint, 1.4) }
                    GradientStop { position: 1; color: designer.tint }
                }
            }
        }
    }

    TimeLabels { bar: designer.bar; ink: Qt.rgba(designer.tint.r, designer.tint.g, designer.tint.b, 0.8) }
}
