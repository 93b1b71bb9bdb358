import QtQuick
import QtQuick.Shapes
import MirlPlayer.Surface
import Qt5Compat.GraphicalEffects as Effects

// The material of the surface in its three forms, all inside the shape's rounded corners:
// `solid` black; `frosted` glass (frost, a dark veil and a sheen as one paint, the music's light
// and a rim);
// `liquid` glass (a diffusing body and a grey smoke). The numbers come from BackdropRules.
Item {
    id: backdrop
    required property var rules
    property real cornerRadius: 12
    property color accent: "white"
    property var levels: null
    property var theme
    property bool libraryOpen: false

    readonly property string form: rules.form
    readonly property bool painted: GraphicsInfo.api === GraphicsInfo.Software

    Rectangle {
        objectName: "solidBackdrop"
        anchors.fill: parent
        visible: backdrop.form === "solid"
        radius: backdrop.cornerRadius
        color: "black"
    }

    Item {
        objectName: "frostedBackdrop"
        anchors.fill: parent
        visible: backdrop.form === "frosted"
        // Frost, veil and sheen as one paint, where the scene graph draws geometry.
        GlassFill {
            objectName: "glassFill"
            anchors.fill: parent
            visible: !backdrop.painted
            rules: backdrop.rules
            cornerRadius: backdrop.cornerRadius
        }
        // The same under the software scene graph: the frost and the veil as one paint, and the
        // sheen over the light below.
        Rectangle {
            anchors.fill: parent
            visible: backdrop.painted
            radius: backdrop.cornerRadius
            color: backdrop.rules.frostAndVeil
        }
        ReflectionView {
            objectName: "reflection"
            anchors.fill: parent
            visible: kind !== ""
            kind: backdrop.rules.reflection
            opacity: backdrop.rules.reflectionOpacity
            cornerRadius: backdrop.cornerRadius
            store: visible ? backdrop.levels : null
            theme: backdrop.theme
            libraryOpen: backdrop.libraryOpen
            // In the library the light spreads wider and softer.
            layer.enabled: blur > 0
            layer.effect: Effects.GaussianBlur {
                radius: 18
                samples: 37
            }
        }
        Shape {
            anchors.fill: parent
            visible: backdrop.painted
            opacity: backdrop.rules.sheenOpacity
            ShapePath {
                strokeWidth: 0
                strokeColor: "transparent"
                fillGradient: LinearGradient {
                    x1: 0; y1: 0
                    x2: backdrop.width; y2: backdrop.height
                    GradientStop { position: 0; color: Qt.rgba(1, 1, 1, 0.13) }
                    GradientStop { position: 0.5; color: "transparent" }
                    GradientStop { position: 1; color: Qt.rgba(1, 1, 1, 0.025) }
                }
                PathSvg {
                    path: SurfaceGeometry.roundedRectPath(0, 0, backdrop.width, backdrop.height,
                                                          backdrop.cornerRadius)
                }
            }
        }
        // The rim: a one-point line along the edge, lit from the top left.
        Shape {
            anchors.fill: parent
            ShapePath {
                strokeWidth: 0
                strokeColor: "transparent"
                fillRule: ShapePath.OddEvenFill
                fillGradient: LinearGradient {
                    x1: 0; y1: 0
                    x2: backdrop.width; y2: backdrop.height
                    GradientStop { position: 0; color: Qt.rgba(backdrop.accent.r, backdrop.accent.g, backdrop.accent.b, 0.7) }
                    GradientStop { position: 0.35; color: Qt.rgba(1, 1, 1, 0.22) }
                    GradientStop { position: 0.7; color: Qt.rgba(backdrop.accent.r, backdrop.accent.g, backdrop.accent.b, 0.32) }
                    GradientStop { position: 1; color: Qt.rgba(1, 1, 1, 0.07) }
                }
                PathSvg {
                    path: SurfaceGeometry.ringPath(backdrop.width, backdrop.height,
                                                   backdrop.cornerRadius, 1)
                }
            }
        }
    }

    Item {
        objectName: "liquidBackdrop"
        anchors.fill: parent
        anchors.margins: 1
        visible: backdrop.form === "liquid"
        readonly property real bodyRadius: Math.max(backdrop.cornerRadius - 1, 0)
        Rectangle {
            anchors.fill: parent
            radius: parent.bodyRadius
            color: backdrop.rules.frostColor
            opacity: backdrop.rules.liquidDiffusion
            visible: opacity > 0
        }
        Rectangle {
            anchors.fill: parent
            radius: parent.bodyRadius
            color: Qt.rgba(0.2, 0.2, 0.2, backdrop.rules.liquidSmoke)
        }
    }
}
