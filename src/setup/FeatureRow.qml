import QtQuick
import QtQuick.Layouts

// A symbol in a soft tile, a heading and a line of text: the tour's way of telling one thing.
RowLayout {
    id: row
    property string symbol
    property string heading
    property string text
    property color tint: SetupStyle.accentColour
    Layout.fillWidth: true
    spacing: 16

    Rectangle {
        Layout.alignment: Qt.AlignTop
        Layout.preferredWidth: 40
        Layout.preferredHeight: 40
        radius: 11
        color: Qt.rgba(row.tint.r, row.tint.g, row.tint.b, 0.16)
        SetupGlyph {
            anchors.centerIn: parent
            width: 22
            height: 22
            symbol: row.symbol
            colour: row.tint
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        Layout.alignment: Qt.AlignVCenter
        spacing: 3
        Text {
            visible: row.heading.length > 0
            text: row.heading
            color: SetupStyle.textColour
            font.pixelSize: SetupStyle.bodySize + 1
            font.weight: Font.DemiBold
        }
        Text {
            Layout.fillWidth: true
            text: row.text
            color: row.heading.length > 0 ? SetupStyle.secondaryText : SetupStyle.textColour
            font.pixelSize: SetupStyle.bodySize
            lineHeight: 1.2
            wrapMode: Text.WordWrap
        }
    }
}
