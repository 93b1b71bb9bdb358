import QtQuick
import MirlPlayer.Surface

// Elapsed and remaining time at the two ends of a timeline, along its bottom.
Item {
    id: labels
    required property var bar
    property real size: 10
    property color ink: Qt.rgba(bar.ink.r, bar.ink.g, bar.ink.b, 0.6)
    anchors.fill: parent
    visible: bar.style.showsTimes
    Text {
        objectName: "elapsed"
        anchors.left: parent.left
        anchors.bottom: parent.bottom
        text: labels.bar.model.elapsedText
        color: labels.ink
        font.pixelSize: labels.size
        font.family: labels.bar.fontFamily
    }
    Text {
        objectName: "remaining"
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        text: labels.bar.model.remainingText
        color: labels.ink
        font.pixelSize: labels.size
        font.family: labels.bar.fontFamily
    }
}
