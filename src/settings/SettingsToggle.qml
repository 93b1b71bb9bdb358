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
        id: control
        // At the top beside the label: a wrapped explanation leaves the row's height stale for a
        // moment, and a centred switch would stay where that height put it.
        Layout.alignment: Qt.AlignTop
        checked: row.checked
        onToggled: row.toggled(checked)
        Accessible.name: row.label
        // A rounded track with a sliding knob, as switches look on current desktops.
        indicator: Rectangle {
            implicitWidth: 38
            implicitHeight: 22
            x: control.leftPadding
            y: (control.height - height) / 2
            radius: height / 2
            color: control.checked ? SettingsStyle.accentColour : "#4a4a52"
            opacity: control.enabled ? 1 : 0.4
            Rectangle {
                x: control.checked ? parent.width - width - 2 : 2
                y: 2
                width: parent.height - 4
                height: width
                radius: width / 2
                color: "#ffffff"
                Behavior on x { NumberAnimation { duration: 120; easing.type: Easing.OutCubic } }
            }
        }
    }
}
