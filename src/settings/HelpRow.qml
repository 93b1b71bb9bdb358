import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// A question, its answer, and the buttons that help.
ColumnLayout {
    id: help
    property string heading
    property string detail
    default property alias buttons: buttonRow.data
    Layout.fillWidth: true
    spacing: 4

    Label { text: help.heading; font.weight: Font.DemiBold; color: SettingsStyle.textColour }
    Label {
        Layout.fillWidth: true
        text: help.detail
        wrapMode: Text.WordWrap
        color: SettingsStyle.secondaryText
    }
    RowLayout { id: buttonRow; visible: children.length > 0 }
}
