import QtQuick

// The probe's level as a bar: the accent while it has not heard anything, green once it has.
Rectangle {
    id: meter
    property real level: 0
    property bool heard: false
    implicitHeight: 10
    radius: height / 2
    color: "#34343b"
    Rectangle {
        width: Math.max(parent.height, parent.width * Math.min(1, meter.level))
        height: parent.height
        radius: parent.radius
        visible: meter.level > 0.001
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop { position: 0; color: meter.heard ? "#2fb35c" : "#3b6fd8" }
            GradientStop { position: 1; color: meter.heard ? "#5be38a" : "#7aa8ff" }
        }
    }
}
