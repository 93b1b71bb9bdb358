import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// The page's title and subtitle above the scrolling area; a hairline shows once rows pass
// beneath it.
Rectangle {
    property string title
    property string subtitle
    property bool softened: false
    implicitHeight: 76
    color: SettingsStyle.windowColour
    z: 1

    ColumnLayout {
        anchors.left: parent.left
        anchors.leftMargin: 24
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2
        Label {
            text: title
            font.pixelSize: 22
            font.weight: Font.DemiBold
            color: SettingsStyle.textColour
        }
        Label {
            text: subtitle
            color: SettingsStyle.secondaryText
        }
    }
    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: SettingsStyle.separatorColour
        opacity: softened ? 1 : 0
        Behavior on opacity { NumberAnimation { duration: 150 } }
    }
}
