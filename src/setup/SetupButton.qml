import QtQuick

// The assistant's button: filled in the accent when `primary`, quiet otherwise, with an
// optional symbol after the text.
Rectangle {
    id: button
    property string text
    property string symbol
    property bool primary: false
    signal clicked()
    implicitWidth: label.implicitWidth + (symbol.length > 0 ? 26 : 0) + 32
    implicitHeight: 34
    radius: 9
    opacity: enabled ? 1 : 0.45
    color: primary ? (tap.pressed ? Qt.darker(SetupStyle.accentColour, 1.2)
                                  : hover.hovered ? Qt.lighter(SetupStyle.accentColour, 1.1)
                                                  : SetupStyle.accentColour)
                   : (tap.pressed ? "#3c3c44" : hover.hovered ? "#36363d" : SetupStyle.cardRaised)
    border.width: primary ? 0 : 1
    border.color: SetupStyle.separatorColour
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: button.clicked()

    Row {
        anchors.centerIn: parent
        spacing: 8
        Text {
            id: label
            anchors.verticalCenter: parent.verticalCenter
            text: button.text
            color: button.primary ? "white" : SetupStyle.textColour
            font.pixelSize: SetupStyle.bodySize - 1
            font.weight: Font.DemiBold
        }
        SetupGlyph {
            anchors.verticalCenter: parent.verticalCenter
            visible: button.symbol.length > 0
            symbol: button.symbol
            colour: label.color
            width: 16
            height: 16
        }
    }
    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    TapHandler { id: tap; onTapped: button.clicked() }
}
