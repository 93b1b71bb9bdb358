import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// A section that opens and closes under a header row; `open` is bound to the settings state.
ColumnLayout {
    id: box
    property string title
    property bool open
    property string settingsAnchor
    signal openToggled(bool open)
    default property alias rows: inner.data
    Layout.fillWidth: true
    spacing: 8

    ItemDelegate {
        Layout.fillWidth: true
        text: box.title
        onClicked: box.openToggled(!box.open)
        leftPadding: 22
        SymbolGlyph {
            anchors.left: parent.left
            anchors.leftMargin: 2
            anchors.verticalCenter: parent.verticalCenter
            symbol: box.open ? "chevron.down" : "chevron.right"
        }
    }
    ColumnLayout {
        id: inner
        visible: box.open
        Layout.fillWidth: true
        spacing: 10
    }
}
