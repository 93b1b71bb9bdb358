import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// The search field, the pages, and at the foot "Changes save automatically" with the maker's
// mark.
Rectangle {
    id: sidebar
    color: SettingsStyle.sidebarColour

    function focusSearch() { field.forceActiveFocus() }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 12
        spacing: 4

        TextField {
            id: field
            objectName: "searchField"
            Layout.fillWidth: true
            Layout.bottomMargin: 8
            placeholderText: "Search"
            leftPadding: 28
            rightPadding: text.length > 0 ? 26 : 8
            text: settings.search
            onTextEdited: settings.search = text
            Accessible.name: "Search settings"
            Keys.onEscapePressed: { settings.search = ""; field.focus = false }
            Keys.onReturnPressed: if (settings.results.length > 0) settings.openResult(0)

            SymbolGlyph {
                anchors.left: parent.left
                anchors.leftMargin: 8
                anchors.verticalCenter: parent.verticalCenter
                symbol: "search"
            }
            ToolButton {
                visible: field.text.length > 0
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                width: 24; height: 24
                text: "✕"
                Accessible.name: "Clear search"
                onClicked: settings.search = ""
            }
        }

        Repeater {
            model: settings.pages
            delegate: ItemDelegate {
                required property var modelData
                required property int index
                Layout.fillWidth: true
                highlighted: index === settings.selection && !settings.searching
                text: modelData.title.replace("&", "&&")
                leftPadding: 36
                contentItem: Label {
                    text: modelData.title
                    color: parent.highlighted ? "#ffffff" : SettingsStyle.textColour
                    verticalAlignment: Text.AlignVCenter
                }
                SymbolGlyph {
                    anchors.left: parent.left
                    anchors.leftMargin: 11
                    anchors.verticalCenter: parent.verticalCenter
                    symbol: modelData.symbol
                    colour: parent.highlighted ? "#ffffff" : SettingsStyle.accentColour
                }
                onClicked: { settings.search = ""; settings.selection = index }
                background: Rectangle {
                    radius: 6
                    color: parent.highlighted ? SettingsStyle.accentColour
                                              : (parent.hovered ? "#2f2f35" : "transparent")
                }
            }
        }

        Item { Layout.fillHeight: true }

        Label {
            text: "Changes save automatically"
            color: SettingsStyle.secondaryText
            font.pixelSize: 11
        }
        Label {
            id: mark
            text: "Built by <a href=\"https://kestrova.com\">Kestrova</a>"
            textFormat: Text.StyledText
            linkColor: mark.hovered ? SettingsStyle.textColour : SettingsStyle.secondaryText
            color: SettingsStyle.secondaryText
            font.pixelSize: 11
            property bool hovered: markHover.hovered
            HoverHandler { id: markHover; cursorShape: Qt.PointingHandCursor }
            onLinkActivated: link => Qt.openUrlExternally(link)
        }
    }
}
