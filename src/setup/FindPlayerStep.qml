import QtQuick
import QtQuick.Layouts

StepPage {
    intro: "Hover the pill at the top of your screen to open the player. Move away and it tucks back into place. Right-click it for Settings, or use the waveform icon in the system tray."

    // The top edge of a screen with the pill, and the pointer on its way to it.
    Rectangle {
        Layout.fillWidth: true
        Layout.preferredHeight: 120
        radius: 14
        color: SetupStyle.cardColour
        border.color: SetupStyle.separatorColour
        clip: true
        Rectangle {
            width: parent.width
            height: 22
            color: "#101013"
            SetupGlyph {
                anchors.right: parent.right
                anchors.rightMargin: 12
                anchors.verticalCenter: parent.verticalCenter
                width: 14
                height: 14
                symbol: "waveform"
                colour: SetupStyle.secondaryText
            }
        }
        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            y: 0
            width: 240
            height: 64
            radius: 16
            color: "#050506"
            Rectangle {
                x: 10; y: 24; width: 30; height: 30; radius: 6
                gradient: Gradient {
                    GradientStop { position: 0; color: "#ff8a5b" }
                    GradientStop { position: 1; color: "#b8447a" }
                }
            }
            Column {
                x: 50; y: 26; spacing: 5
                Rectangle { width: 110; height: 7; radius: 3.5; color: "#e8e8ee" }
                Rectangle { width: 70; height: 6; radius: 3; color: "#77777f" }
            }
        }
        // The pointer, resting on the open card.
        Canvas {
            x: parent.width / 2 + 62
            y: 44
            width: 18
            height: 26
            onPaint: {
                const g = getContext("2d")
                g.beginPath()
                g.moveTo(2, 1); g.lineTo(2, 20); g.lineTo(6.5, 15.5); g.lineTo(10, 23)
                g.lineTo(13, 21.6); g.lineTo(9.6, 14.4); g.lineTo(16, 14.4); g.closePath()
                g.fillStyle = "white"
                g.strokeStyle = "black"
                g.lineWidth = 1.2
                g.fill()
                g.stroke()
            }
        }
        Text {
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 12
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Hover to open · move away to close"
            color: SetupStyle.tertiaryText
            font.pixelSize: SetupStyle.smallSize
        }
    }

    Notice {
        visible: !setup.statusItemVisible
        heading: "Your desktop shows no tray icons"
        text: "The waveform icon can't appear without a system tray. Open MIRL PRO again from your applications whenever you need to reach Settings."
    }
}
