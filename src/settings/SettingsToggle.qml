import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// A switch with its label and a line of explanation beneath.
RowLayout {
    id: row
    property string label
    property string detail
    property bool checked
    property string settingsAnchor
    signal toggled(bool on)
    Layout.fillWidth: true
    spacing: 12

    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2
        Label { Layout.fillWidth: true; text: row.label; color: row.enabled ? SettingsStyle.textColour : SettingsStyle.secondaryText }
        Label {
            visible: row.detail.length > 0
            Layout.fillWidth: true
            text: row.detail
            wrapMode: Text.WordWrap
            color: SettingsStyle.secondaryText
            font.pixelSize: 11
        }
    }
    Switch {
        checked: row.checked
        onToggled: row.toggled(checked)
        Accessible.name: row.label
    }
}
