import QtQuick
import QtQuick.Controls.Fusion

// The window's push button: rounded and flat like the choices beside it; `highlighted` marks the
// step the page suggests, `destructive` one that removes something.
Button {
    id: button
    property bool destructive: false
    implicitHeight: 30
    leftPadding: 14
    rightPadding: 14
    contentItem: Label {
        text: button.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        color: button.destructive ? "#ff6b6b"
             : button.highlighted ? "#ffffff" : SettingsStyle.textColour
        opacity: button.enabled ? 1 : 0.45
    }
    background: Rectangle {
        radius: 7
        color: button.highlighted ? (button.down ? Qt.darker(SettingsStyle.accentColour, 1.2)
                                                 : SettingsStyle.accentColour)
             : button.down ? "#2a2a30" : button.hovered ? "#45454d" : "#38383f"
        border.color: button.highlighted ? "transparent" : "#4a4a52"
        opacity: button.enabled ? 1 : 0.6
    }
}
