import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// Colour choices as round swatches with their names beneath; the current one carries a tick.
Flow {
    id: row
    property var choices: []
    property string current
    signal chosen(string id)
    Layout.fillWidth: true
    spacing: 10
    Repeater {
        model: row.choices
        delegate: ColumnLayout {
            required property var modelData
            width: 64
            spacing: 2
            Rectangle {
                Layout.alignment: Qt.AlignHCenter
                width: 28; height: 28; radius: 14
                color: modelData.color
                border.width: modelData.id === row.current ? 2 : 1
                border.color: modelData.id === row.current ? SettingsStyle.accentColour
                                                           : SettingsStyle.separatorColour
                SymbolGlyph {
                    anchors.centerIn: parent
                    visible: modelData.id === row.current
                    symbol: "checkmark"
                    colour: Qt.colorEqual(modelData.color, "white") ? "black" : "white"
                }
                MouseArea { anchors.fill: parent; onClicked: row.chosen(modelData.id) }
                Accessible.role: Accessible.RadioButton
                Accessible.name: modelData.name
            }
            Label {
                Layout.alignment: Qt.AlignHCenter
                text: modelData.name
                font.pixelSize: 10
                color: SettingsStyle.secondaryText
                elide: Text.ElideRight
                Layout.maximumWidth: 64
            }
        }
    }
}
