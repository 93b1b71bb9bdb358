import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// A read-only value with a button that copies it and says "Copied" for a moment.
ColumnLayout {
    id: field
    property string label
    property string value
    property string note
    Layout.fillWidth: true
    spacing: 2

    RowLayout {
        Layout.fillWidth: true
        Label { text: field.label; color: SettingsStyle.secondaryText; Layout.preferredWidth: 110 }
        TextField { id: box; Layout.fillWidth: true; readOnly: true; text: field.value }
        SettingsButton {
            id: copy
            text: copied.running ? "Copied" : "Copy"
            onClicked: { box.selectAll(); box.copy(); box.deselect(); copied.restart() }
        }
        Timer { id: copied; interval: 1500 }
    }
    Label {
        visible: field.note.length > 0
        Layout.fillWidth: true
        wrapMode: Text.WordWrap
        text: field.note
        color: SettingsStyle.secondaryText
        font.pixelSize: 11
    }
}
