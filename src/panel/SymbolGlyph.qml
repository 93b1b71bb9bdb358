import QtQuick
import MirlPlayer.Surface
import QtQuick.Shapes

// The transport and note symbols, drawn as shapes so they look the same whatever fonts are
// installed: "play", "pause", "next", "previous", "note". A light weight draws them as outlines.
Shape {
    id: glyph
    property string kind: "play"
    property real size: 14
    property color ink: "white"
    property bool light: false

    width: size
    height: size
    transform: Scale {
        origin.x: glyph.size / 2
        xScale: glyph.kind === "previous" ? -1 : 1
    }
    ShapePath {
        strokeWidth: glyph.light ? Math.max(1, glyph.size / 14) : 0
        strokeColor: glyph.light ? glyph.ink : "transparent"
        fillColor: glyph.light ? "transparent" : glyph.ink
        joinStyle: ShapePath.RoundJoin
        PathSvg { path: SurfaceGeometry.symbolPath(glyph.kind, glyph.size) }
    }
}
