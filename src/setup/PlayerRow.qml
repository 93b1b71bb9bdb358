import QtQuick
import QtQuick.Layouts

// One player on the music step: its name, what MIRL PRO knows of it, and the row's buttons
// (or a green check once it answered).
Rectangle {
    id: row
    required property var player // a row of setup.apps
    Layout.fillWidth: true
    implicitHeight: Math.max(64, content.implicitHeight + 24)
    radius: 12
    color: SetupStyle.cardColour
    border.color: player.allowed ? Qt.rgba(0.24, 0.81, 0.43, 0.45) : SetupStyle.separatorColour

    RowLayout {
        id: content
        anchors.fill: parent
        anchors.leftMargin: 16
        anchors.rightMargin: 14
        spacing: 14

        Rectangle {
            Layout.preferredWidth: 36
            Layout.preferredHeight: 36
            radius: 9
            color: row.player.name === "Spotify" ? "#1db954" : "#fa586a"
            Text {
                anchors.centerIn: parent
                text: row.player.name.charAt(0)
                color: "white"
                font.pixelSize: 17
                font.weight: Font.Bold
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2
            Text {
                text: row.player.name
                color: SetupStyle.textColour
                font.pixelSize: SetupStyle.bodySize + 1
                font.weight: Font.DemiBold
            }
            Text {
                objectName: "playerStatus"
                Layout.fillWidth: true
                text: row.player.status
                color: row.player.allowed ? SetupStyle.goodColour : SetupStyle.secondaryText
                font.pixelSize: SetupStyle.smallSize + 1
                wrapMode: Text.WordWrap
            }
        }
        Repeater {
            model: row.player.actions
            delegate: SetupButton {
                required property string modelData
                text: modelData
                primary: modelData === "Allow" || modelData === "Try Again"
                onClicked: modelData === "Allow" || modelData === "Try Again"
                           ? setup.ask(row.player.id) : setup.openSettings("automation")
            }
        }
        SetupGlyph {
            visible: row.player.allowed
            symbol: "checkmark.circle.fill"
            colour: SetupStyle.goodColour
            width: 24
            height: 24
        }
    }
}
