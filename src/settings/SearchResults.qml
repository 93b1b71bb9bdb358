import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// The results of the search field in catalogue order; a click takes the user to the setting.
ColumnLayout {
    spacing: 4

    Label {
        Layout.topMargin: 14
        visible: settings.results.length > 0
        text: settings.results.length + " results"
        color: SettingsStyle.secondaryText
    }
    Label {
        Layout.topMargin: 60
        Layout.fillWidth: true
        visible: settings.results.length === 0
        horizontalAlignment: Text.AlignHCenter
        text: "No Results for “" + settings.search.trim() + "”"
        font.pixelSize: 16
        color: SettingsStyle.secondaryText
    }
    Repeater {
        model: settings.results
        delegate: ItemDelegate {
            required property var modelData
            required property int index
            Layout.fillWidth: true
            onClicked: settings.openResult(index)
            contentItem: RowLayout {
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 1
                    Label { Layout.fillWidth: true; text: modelData.title; color: SettingsStyle.textColour }
                    Label { text: modelData.pageTitle; color: SettingsStyle.secondaryText; font.pixelSize: 11 }
                }
                SymbolGlyph { symbol: "chevron.right" }
            }
            background: Rectangle {
                radius: 8
                color: parent.hovered ? "#303036" : SettingsStyle.cardColour
            }
        }
    }
}
