import QtQuick
import QtQuick.Shapes

// The progress of a pull to refresh: a ring 16 points across, drawn from the top clockwise as far
// as the pull has come. Hidden from accessibility.
Shape {
    id: ring
    property real progress: 0
    width: 16
    height: 16
    opacity: Math.min(progress * 1.6, 1)
    visible: progress > 0
    Accessible.ignored: true
    ShapePath {
        strokeColor: Qt.rgba(1, 1, 1, 0.7)
        strokeWidth: 1.6
        fillColor: "transparent"
        capStyle: ShapePath.RoundCap
        PathAngleArc {
            centerX: 8
            centerY: 8
            radiusX: 7.2
            radiusY: 7.2
            startAngle: -90
            sweepAngle: 360 * Math.min(ring.progress, 0.999)
        }
    }
}
