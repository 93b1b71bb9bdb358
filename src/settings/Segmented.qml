import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// A row of exclusive choices (`choices`: id and title or name) in one rounded track; the current
// one stands out, and stays marked while the row is disabled.
Rectangle {
    id: seg
    property var choices: []
    property string current
    signal chosen(string id)
    implicitWidth: row.implicitWidth + 4
    implicitHeight: 30
    radius: 8
    color: "#1f1f23"
    border.color: SettingsStyle.separatorColour
    opacity: enabled ? 1 : 0.55

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.margins: 2
        spacing: 2
        Repeater {
            model: seg.choices
            delegate: AbstractButton {
                id: choice
                required property var modelData
                readonly property bool selected: modelData.id === seg.current
                Layout.fillHeight: true
                implicitWidth: label.implicitWidth + 28
                text: modelData.title !== undefined ? modelData.title : modelData.name
                onClicked: seg.chosen(modelData.id)
                Accessible.role: Accessible.RadioButton
                Accessible.name: text
                Accessible.checked: selected
                contentItem: Label {
                    id: label
                    text: choice.text
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    color: choice.selected ? "#ffffff" : SettingsStyle.textColour
                }
                background: Rectangle {
                    radius: 6
                    color: choice.selected ? SettingsStyle.accentColour
                                           : choice.hovered ? "#2f2f35" : "transparent"
                }
            }
        }
    }
}
