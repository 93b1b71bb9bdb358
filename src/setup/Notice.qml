import QtQuick
import QtQuick.Layouts

// A warning card: a symbol, a heading and what to do.
Rectangle {
    id: notice
    property string heading
    property string text
    Layout.fillWidth: true
    implicitHeight: column.implicitHeight + 28
    radius: 12
    color: Qt.rgba(1, 0.70, 0.25, 0.10)
    border.color: Qt.rgba(1, 0.70, 0.25, 0.35)

    RowLayout {
        id: column
        anchors.fill: parent
        anchors.margins: 14
        spacing: 12
        SetupGlyph {
            Layout.alignment: Qt.AlignTop
            symbol: "exclamationmark.triangle.fill"
            colour: SetupStyle.warningColour
            width: 20
            height: 20
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 4
            Text {
                text: notice.heading
                color: SetupStyle.textColour
                font.pixelSize: SetupStyle.bodySize
                font.weight: Font.DemiBold
            }
            Text {
                Layout.fillWidth: true
                text: notice.text
                color: SetupStyle.secondaryText
                font.pixelSize: SetupStyle.smallSize + 1
                wrapMode: Text.WordWrap
            }
        }
    }
}
