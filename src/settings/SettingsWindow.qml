import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// The settings window: the sidebar with search and pages, the page header, and the selected
// page (or the search results) in a scrolling area.
ApplicationWindow {
    id: window
    title: "MIRL PRO Settings"
    width: 800
    height: 680
    minimumWidth: 780
    minimumHeight: 640
    visible: false
    palette.window: "#1b1b1e"
    palette.windowText: "#f2f2f5"
    palette.base: "#202024"
    palette.alternateBase: "#26262b"
    palette.text: "#f2f2f5"
    palette.button: "#34343a"
    palette.buttonText: "#f2f2f5"
    palette.highlight: "#4f8cff"
    palette.highlightedText: "#ffffff"
    palette.placeholderText: "#7d7d86"
    palette.mid: "#3a3a40"
    palette.dark: "#141416"
    palette.light: "#45454c"
    palette.midlight: "#3d3d44"
    palette.toolTipBase: "#2a2a2f"
    palette.toolTipText: "#f2f2f5"
    color: SettingsStyle.windowColour

    readonly property var pageFiles: ["AppearancePage.qml", "VisualizerPage.qml",
        "AudioPage.qml", "SpotifyPage.qml", "UpdatesPage.qml"]

    Shortcut {
        sequence: StandardKey.Find
        onActivated: sidebar.focusSearch()
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0

        SettingsSidebar {
            id: sidebar
            Layout.fillHeight: true
            Layout.preferredWidth: 220
        }

        ColumnLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            spacing: 0

            SettingsPageHeader {
                Layout.fillWidth: true
                title: settings.headerTitle
                subtitle: settings.headerSubtitle
                softened: pageArea.contentY > 2
            }

            Flickable {
                id: pageArea
                objectName: "settingsViewport"
                Layout.fillWidth: true
                Layout.fillHeight: true
                clip: true
                contentWidth: width
                contentHeight: content.height + 32
                boundsBehavior: Flickable.StopAtBounds
                ScrollBar.vertical: ScrollBar {}

                Behavior on contentY {
                    id: scrollGlide
                    enabled: false
                    NumberAnimation { duration: 220; easing.type: Easing.OutCubic }
                }

                Item {
                    id: content
                    x: 24
                    width: pageArea.width - 48
                    height: settings.searching ? results.implicitHeight
                                               : (pageLoader.item ? pageLoader.item.implicitHeight : 0)

                    SearchResults {
                        id: results
                        width: parent.width
                        visible: settings.searching
                    }
                    Loader {
                        id: pageLoader
                        width: parent.width
                        visible: !settings.searching
                        source: window.pageFiles[settings.selection]
                    }
                }
            }
        }
    }

    // Brings a named anchor of the page 14 % below the top of the scrolling area.
    function scrollTo(anchor) {
        if (anchor === "settingsTop" || !pageLoader.item) {
            scrollGlide.enabled = false
            pageArea.contentY = 0
            return
        }
        const item = findAnchor(pageLoader.item, anchor)
        if (!item)
            return
        const y = item.mapToItem(content, 0, 0).y
        const top = Math.max(0, Math.min(y - pageArea.height * 0.14,
                                         pageArea.contentHeight - pageArea.height))
        scrollGlide.enabled = true
        pageArea.contentY = top
    }

    function findAnchor(item, anchor) {
        if (item.settingsAnchor !== undefined && item.settingsAnchor === anchor)
            return item
        for (let i = 0; i < item.children.length; ++i) {
            const found = findAnchor(item.children[i], anchor)
            if (found)
                return found
        }
        return null
    }

    Connections {
        target: settings
        // Posted once more, so that a section opened by the jump has laid itself out.
        function onScrollRequested(anchor) { Qt.callLater(window.scrollTo, anchor) }
    }
}
