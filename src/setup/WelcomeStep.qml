import QtQuick
import QtQuick.Layouts

StepPage {
    intro: "Your music, right at the top of your screen."

    // The pill at the top edge of a screen, as the user will find it.
    Rectangle {
        Layout.fillWidth: true
        Layout.preferredHeight: 96
        Layout.bottomMargin: 10
        radius: 14
        clip: true
        gradient: Gradient {
            GradientStop { position: 0; color: "#2a3350" }
            GradientStop { position: 1; color: "#3a2846" }
        }
        Rectangle { // the desktop's top bar
            width: parent.width
            height: 14
            color: "#101013"
            opacity: 0.8
        }
        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.top: parent.top
            width: 150
            height: 26
            radius: 13
            color: "#050506"
            Row {
                anchors.centerIn: parent
                spacing: 3
                Repeater {
                    model: [6, 11, 15, 9, 13, 7, 10]
                    delegate: Rectangle {
                        required property int modelData
                        anchors.verticalCenter: parent.verticalCenter
                        width: 3
                        height: modelData
                        radius: 1.5
                        color: "#7aa8ff"
                    }
                }
            }
        }
    }

    FeatureRow {
        symbol: "rectangle.topthird.inset.filled"
        heading: "Always there"
        text: "A small pill at the top of your screen that opens on hover."
    }
    FeatureRow {
        symbol: "music.note.list"
        heading: "Your library"
        text: "Playlists, Liked Songs and search without leaving your work."
    }
    FeatureRow {
        symbol: "waveform"
        heading: "Alive"
        text: "A visualizer that moves with your music."
    }
}
