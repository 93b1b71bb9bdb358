import QtQuick
import QtQuick.Layouts

// One of the visualizer step's two choices: a symbol, a name and what it needs; selected
// with an accent ring.
Rectangle {
    id: card
    property string symbol
    property string heading
    property string detail
    property bool selected: false
    signal chosen()
    Layout.fillWidth: true
    implicitHeight: 92
    radius: 14
    color: selected ? Qt.rgba(0.31, 0.55, 1, 0.12) : SetupStyle.cardColour
    border.width: selected ? 2 : 1
    border.color: selected ? SetupStyle.accentColour : SetupStyle.separatorColour
    Accessible.role: Accessible.RadioButton
    Accessible.name: heading
    Accessible.checked: selected

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 16
        spacing: 4
        SetupGlyph {
            symbol: card.symbol
            colour: card.selected ? SetupStyle.accentColour : SetupStyle.secondaryText
        }
        Text {
            text: card.heading
            color: SetupStyle.textColour
            font.pixelSize: SetupStyle.bodySize + 1
            font.weight: Font.DemiBold
        }
        Text {
            text: card.detail
            color: SetupStyle.secondaryText
            font.pixelSize: SetupStyle.smallSize
        }
    }
    HoverHandler { cursorShape: Qt.PointingHandCursor }
    TapHandler { onTapped: card.chosen() }
}
