import QtQuick
import QtQuick.Layouts

// The rail at the left: the heading, and every step with its number, done steps ticked and
// the current one marked. A step already reached can be clicked to go back to it.
Rectangle {
    id: rail
    color: SetupStyle.railColour

    Rectangle {
        anchors.right: parent.right
        width: 1
        height: parent.height
        color: SetupStyle.separatorColour
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.topMargin: 40
        anchors.leftMargin: 22
        anchors.rightMargin: 18
        spacing: 4

        Text {
            text: "PRO  /  GETTING STARTED"
            color: SetupStyle.tertiaryText
            font.pixelSize: 11
            font.letterSpacing: 1.2
            font.weight: Font.DemiBold
            Layout.bottomMargin: 18
        }

        Repeater {
            model: setup.railLabels
            delegate: Rectangle {
                id: row
                required property int index
                required property string modelData
                readonly property bool current: index === setup.step
                readonly property bool passed: index < setup.step
                Layout.fillWidth: true
                Layout.preferredHeight: 38
                radius: 9
                color: current ? SetupStyle.cardRaised : (hover.hovered && passed ? SetupStyle.cardColour : "transparent")

                Rectangle {
                    id: badge
                    anchors.left: parent.left
                    anchors.leftMargin: 8
                    anchors.verticalCenter: parent.verticalCenter
                    width: 22
                    height: 22
                    radius: 11
                    color: row.current ? SetupStyle.accentColour : "transparent"
                    border.width: row.current ? 0 : 1.5
                    border.color: row.passed ? SetupStyle.goodColour : SetupStyle.separatorColour
                    Text {
                        anchors.centerIn: parent
                        visible: !row.passed
                        text: row.index + 1
                        color: row.current ? "white" : SetupStyle.tertiaryText
                        font.pixelSize: 11
                        font.weight: Font.DemiBold
                    }
                    SetupGlyph {
                        anchors.centerIn: parent
                        visible: row.passed
                        width: 14
                        height: 14
                        symbol: "checkmark.circle.fill"
                        colour: SetupStyle.goodColour
                    }
                }
                Text {
                    anchors.left: badge.right
                    anchors.leftMargin: 11
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    text: row.modelData
                    elide: Text.ElideRight
                    color: row.current ? SetupStyle.textColour
                                       : (row.passed ? SetupStyle.secondaryText : SetupStyle.tertiaryText)
                    font.pixelSize: 13
                    font.weight: row.current ? Font.DemiBold : Font.Normal
                }
                HoverHandler { id: hover; enabled: row.passed }
                TapHandler {
                    enabled: row.passed
                    onTapped: setup.goTo(row.index)
                }
            }
        }

        Item { Layout.fillHeight: true }
    }
}
