import QtQuick
import QtQuick.Layouts

// One step's page: the title, an introduction and the step's own content below.
ColumnLayout {
    id: page
    property string intro
    default property alias content: body.data
    spacing: 0

    Text {
        Layout.fillWidth: true
        text: setup.title
        color: SetupStyle.textColour
        font.pixelSize: SetupStyle.titleSize
        font.weight: Font.Bold
        wrapMode: Text.WordWrap
    }
    Text {
        Layout.fillWidth: true
        Layout.topMargin: 10
        visible: page.intro.length > 0
        text: page.intro
        color: SetupStyle.secondaryText
        font.pixelSize: SetupStyle.bodySize + 1
        lineHeight: 1.25
        wrapMode: Text.WordWrap
    }
    ColumnLayout {
        id: body
        Layout.fillWidth: true
        Layout.topMargin: 26
        spacing: 12
    }
    Item { Layout.fillHeight: true }
}
