import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// A titled group of rows on a card, with an optional footer; `settingsAnchor` is where a search
// result scrolls to.
ColumnLayout {
    id: section
    property string title
    property string footer
    property string settingsAnchor
    default property alias rows: card.data
    Layout.fillWidth: true
    Layout.topMargin: 14
    spacing: 6

    Label {
        visible: section.title.length > 0
        text: section.title
        font.weight: Font.DemiBold
        color: SettingsStyle.textColour
    }
    Rectangle {
        Layout.fillWidth: true
        implicitHeight: card.implicitHeight + 24
        radius: 10
        color: SettingsStyle.cardColour
        ColumnLayout {
            id: card
            x: 14
            y: 12
            width: parent.width - 28
            spacing: 10
        }
    }
    Label {
        visible: section.footer.length > 0
        Layout.fillWidth: true
        text: section.footer
        wrapMode: Text.WordWrap
        color: SettingsStyle.secondaryText
        font.pixelSize: 11
    }
}
