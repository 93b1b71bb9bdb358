import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// One numbered step of the setup guide on its card.
SettingsSection {
    id: step
    property int number
    property string heading
    property string detail
    default property alias extra: more.data

    rows: RowLayout {
        Layout.fillWidth: true
        spacing: 10
        Rectangle {
            Layout.alignment: Qt.AlignTop
            width: 22; height: 22; radius: 11
            color: SettingsStyle.accentColour
            Label { anchors.centerIn: parent; text: step.number; color: "white"; font.pixelSize: 11 }
        }
        ColumnLayout {
            Layout.fillWidth: true
            Label { text: step.heading; font.weight: Font.DemiBold; color: SettingsStyle.textColour }
            Label { Layout.fillWidth: true; text: step.detail; wrapMode: Text.WordWrap; color: SettingsStyle.secondaryText }
            ColumnLayout { id: more; Layout.fillWidth: true; spacing: 6 }
        }
    }
}
