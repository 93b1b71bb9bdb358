import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts
import MirlPlayer.Look

// Music access: the consent, what the capture last said, and help when the visualizer stays
// still.
ColumnLayout {
    spacing: 4
    readonly property bool needs: Theme.needsAudio
    // Re-read whenever anything the status row depends on changes.
    readonly property string rowText: audioCapture.enabled, audioCapture.status,
        audioCapture.needsAttention, audioCapture.rowText(needs)
    readonly property string rowSymbol: audioCapture.enabled, audioCapture.needsAttention,
        audioCapture.rowSymbol(needs)
    readonly property string rowButton: audioCapture.enabled, audioCapture.needsAttention,
        audioCapture.rowButton(needs)

    SettingsSection {
        title: "Music access"
        settingsAnchor: "capture"
        footer: "Audio stays on your computer. MIRL PRO never records files or uses your microphone."

        SettingsToggle {
            label: "Let the visualizer hear your music"
            detail: "Works with Spotify and the other players on your desktop."
            checked: audioCapture.enabled
            onToggled: on => audioCapture.enabled = on
        }
        Rectangle { Layout.fillWidth: true; height: 1; color: SettingsStyle.separatorColour }
        RowLayout {
            property string settingsAnchor: "status"
            objectName: "captureStatus"
            Layout.fillWidth: true
            spacing: 10
            SymbolGlyph {
                symbol: rowSymbol
                colour: rowSymbol === "exclamationmark.circle" ? SettingsStyle.warningColour
                                                              : SettingsStyle.secondaryText
            }
            Label {
                Layout.fillWidth: true
                text: rowText
                wrapMode: Text.WordWrap
                color: SettingsStyle.textColour
            }
            SettingsButton {
                visible: rowButton.length > 0
                text: rowButton
                onClicked: rowButton === "Try Again" ? audioCapture.postRetry()
                                                      : (Theme.showVisualizer = true)
            }
        }
    }

    SettingsSection {
        title: "Response"
        settingsAnchor: "loudness"
        footer: "Keeps quiet songs visually lively. This changes the visualizer, not your listening volume."
        SettingsToggle {
            label: "Balance quiet and loud songs"
            enabled: audioCapture.enabled && needs
            checked: settings.matchLoudness
            onToggled: on => settings.matchLoudness = on
        }
    }

    SettingsSection {
        title: "Connection help"
        settingsAnchor: "permission"

        HelpRow {
            heading: "Visualizer not moving?"
            detail: "Play a song, then check that your player plays through PipeWire or PulseAudio. MIRL PRO listens to the player's own sound, never to other apps."
            SettingsButton { text: "Check Connection"; onClicked: audioCapture.postRetry() }
        }
        HelpRow {
            property string settingsAnchor: "automation"
            heading: "Playback buttons not working?"
            detail: "MIRL PRO controls players through their media controls (MPRIS). Make sure your player offers them; in some players they are a setting."
        }
        HelpRow {
            property string settingsAnchor: "setup"
            heading: "Guided setup"
            detail: "Check music and audio permissions step by step."
            SettingsButton { text: "Open Setup Assistant…"; onClicked: settings.showSetupAssistant() }
        }
    }
}
