import QtQuick
import QtQuick.Controls

// A quiet text or symbol button of the library, with its tooltip.
Rectangle {
    id: button
    property string text
    property string help
    property color ink: Qt.rgba(1, 1, 1, 0.85)
    property real fontSize: 12
    property bool prominent: false
    property bool enabledState: true
    readonly property bool hovered: area.containsMouse
    signal clicked
    signal hoverMoved(point screenPoint)
    signal hoverEnded

    implicitWidth: label.implicitWidth + 16
    implicitHeight: 24
    radius: height / 2
    opacity: enabledState ? 1 : 0.4
    color: prominent ? (hovered ? "#1fdf64" : "#1ed760")
                     : Qt.rgba(1, 1, 1, hovered ? 0.16 : 0.08)
    Text {
        id: label
        anchors.centerIn: parent
        text: button.text
        color: button.prominent ? "black" : button.ink
        font.pixelSize: button.fontSize
        font.weight: button.prominent ? Font.DemiBold : Font.Medium
    }
    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        cursorShape: Qt.PointingHandCursor
        enabled: button.enabledState
        onClicked: button.clicked()
        onPositionChanged: mouse => button.hoverMoved(mapToGlobal(mouse.x, mouse.y))
        onEntered: button.hoverMoved(mapToGlobal(mouseX, mouseY))
        onExited: button.hoverEnded()
    }
    ToolTip.visible: help !== "" && hovered
    ToolTip.delay: 600
    ToolTip.text: help
    Accessible.role: Accessible.Button
    Accessible.name: help !== "" ? help : text
    Accessible.onPressAction: clicked()
}
