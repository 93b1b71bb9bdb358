import QtQuick
import QtQuick.Layouts

StepPage {
    intro: "Play a song and hover the top of your screen to open MIRL PRO."

    FeatureRow {
        symbol: "slider.horizontal.3"
        text: "Make it yours in Settings: glass, colours, position, motion speed and visualizer styles."
    }
    FeatureRow {
        symbol: "arrow.counterclockwise"
        text: "Replay this tour any time from the tray icon → Setup Assistant."
    }

    // Open at login: the same autostart entry as the switch in Settings.
    Rectangle {
        Layout.fillWidth: true
        Layout.topMargin: 8
        implicitHeight: 60
        radius: 12
        color: SetupStyle.cardColour
        border.color: SetupStyle.separatorColour
        RowLayout {
            anchors.fill: parent
            anchors.leftMargin: 16
            anchors.rightMargin: 16
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 2
                Text {
                    text: "Open at login"
                    color: SetupStyle.textColour
                    font.pixelSize: SetupStyle.bodySize
                    font.weight: Font.DemiBold
                }
                Text {
                    text: "Start MIRL PRO when you sign in to your desktop."
                    color: SetupStyle.secondaryText
                    font.pixelSize: SetupStyle.smallSize + 1
                }
            }
            Rectangle {
                id: toggle
                objectName: "openAtLogin"
                implicitWidth: 42
                implicitHeight: 24
                radius: 12
                color: loginItem.enabled ? SetupStyle.goodColour : "#4a4a52"
                Accessible.role: Accessible.CheckBox
                Accessible.name: "Open at login"
                Accessible.checked: loginItem.enabled
                Rectangle {
                    x: loginItem.enabled ? parent.width - width - 3 : 3
                    anchors.verticalCenter: parent.verticalCenter
                    width: 18
                    height: 18
                    radius: 9
                    color: "white"
                    Behavior on x { NumberAnimation { duration: 140; easing.type: Easing.OutCubic } }
                }
                TapHandler { onTapped: loginItem.enabled = !loginItem.enabled }
            }
        }
    }
}
