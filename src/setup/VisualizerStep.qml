import QtQuick
import QtQuick.Layouts

StepPage {
    intro: "Let the visualizer move with your music. MIRL PRO listens to the audio of your music app on this computer. It never saves or uploads it and never uses your microphone."

    RowLayout {
        Layout.fillWidth: true
        spacing: 12
        ChoiceCard {
            objectName: "chooseLive"
            symbol: "waveform"
            heading: "Live visualizer"
            detail: "Needs audio recording permission"
            selected: setup.liveVisualizer
            onChosen: setup.liveVisualizer = true
        }
        ChoiceCard {
            objectName: "chooseArtwork"
            symbol: "photo"
            heading: "Artwork only"
            detail: "No extra permission"
            selected: !setup.liveVisualizer
            onChosen: setup.liveVisualizer = false
        }
    }

    Rectangle {
        visible: setup.liveVisualizer
        Layout.fillWidth: true
        Layout.topMargin: 4
        implicitHeight: check.implicitHeight + 32
        radius: 14
        color: SetupStyle.cardColour
        border.color: SetupStyle.separatorColour

        ColumnLayout {
            id: check
            anchors.fill: parent
            anchors.margins: 16
            spacing: 12
            RowLayout {
                Layout.fillWidth: true
                spacing: 14
                SetupButton {
                    objectName: "allowAudio"
                    text: "Allow Audio Recording"
                    primary: !setup.probe.running && !setup.probe.heard
                    enabled: !setup.probe.running
                    onClicked: setup.startProbe()
                }
                LevelMeter {
                    Layout.fillWidth: true
                    level: setup.probe.level
                    heard: setup.probe.heard
                }
            }
            RowLayout {
                spacing: 8
                SetupGlyph {
                    visible: setup.probe.heard
                    symbol: "checkmark.circle.fill"
                    colour: SetupStyle.goodColour
                    width: 18
                    height: 18
                }
                Text {
                    objectName: "probeText"
                    text: setup.probeText
                    color: setup.probe.heard ? SetupStyle.goodColour
                                             : setup.probe.failed ? SetupStyle.warningColour
                                                                  : SetupStyle.textColour
                    font.pixelSize: SetupStyle.bodySize
                    font.weight: Font.DemiBold
                }
            }
        }
    }

    RowLayout {
        visible: setup.liveVisualizer
        Layout.fillWidth: true
        spacing: 14
        Text {
            Layout.fillWidth: true
            text: "If the bar stays still while a song plays, check in your sound settings that MIRL PRO may record your music app."
            color: SetupStyle.tertiaryText
            font.pixelSize: SetupStyle.smallSize + 1
            wrapMode: Text.WordWrap
        }
        SetupButton {
            visible: setup.canOpenSettings("audio")
            text: "Open Audio Recording Settings"
            onClicked: setup.openSettings("audio")
        }
    }
}
