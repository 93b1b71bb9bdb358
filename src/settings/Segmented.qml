import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// A row of exclusive choices (`choices`: id and title or name).
RowLayout {
    id: seg
    property var choices: []
    property string current
    signal chosen(string id)
    spacing: 0
    Repeater {
        model: seg.choices
        delegate: Button {
            required property var modelData
            text: modelData.title !== undefined ? modelData.title : modelData.name
            checkable: true
            checked: modelData.id === seg.current
            onClicked: seg.chosen(modelData.id)
            highlighted: checked
        }
    }
}
