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
        delegate: Button {
            required property var modelData
            Layout.fillWidth: true
            text: modelData.title !== undefined ? modelData.title : modelData.name
            highlighted: modelData.id === grid.current
            onClicked: grid.chosen(modelData.id)
        }
    }
}
