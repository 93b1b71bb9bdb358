import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// A grid of named choices, the current one highlighted.
GridLayout {
    id: grid
    property var choices: []
    property string current
    signal chosen(string id)
    Layout.fillWidth: true
    columns: 3
    columnSpacing: 8
    rowSpacing: 8
    Repeater {
        model: grid.choices
        delegate: AbstractButton {
            id: choice
            required property var modelData
            readonly property bool selected: modelData.id === grid.current
            Layout.fillWidth: true
            Layout.preferredWidth: 1 // equal columns, whatever the titles' lengths
            implicitHeight: 32
            text: modelData.title !== undefined ? modelData.title : modelData.name
            onClicked: grid.chosen(modelData.id)
            Accessible.role: Accessible.RadioButton
            Accessible.name: text
            Accessible.checked: selected
            contentItem: Label {
                text: choice.text
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
                color: choice.selected ? "#ffffff" : SettingsStyle.textColour
            }
            background: Rectangle {
                radius: 8
                color: choice.selected ? SettingsStyle.accentColour
                                       : choice.hovered ? "#36363d" : "#1f1f23"
                border.color: choice.selected ? SettingsStyle.accentColour
                                              : SettingsStyle.separatorColour
            }
        }
    }
}
