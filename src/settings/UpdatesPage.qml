import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// Updates, feedback by e-mail, and opening at login. Everything about updates comes from the
// updater; a build without updates says so here.
ColumnLayout {
    id: page
    spacing: 4
    // The status line ages while it is read.
    property double now: Date.now()
    Timer { interval: 60000; repeat: true; running: page.visible; onTriggered: page.now = Date.now() }

    SettingsSection {
        visible: !updater.available && updater.channel.length > 0
        title: "Early access beta"
        RowLayout {
            spacing: 8
            SymbolGlyph { symbol: "sparkles"; colour: SettingsStyle.accentColour }
            Label { text: "MIRL PRO " + versionText; font.weight: Font.DemiBold; color: SettingsStyle.textColour }
        }
        Label {
            Layout.fillWidth: true
            wrapMode: Text.WordWrap
            color: SettingsStyle.secondaryText
            text: "Thanks for trying the early access beta. This version can't update itself, so keep an eye on Kestrova's socials and the website for new versions of MIRL PRO. Install a new version over this one and your settings carry over."
        }
        SettingsButton { text: updater.websiteButtonText; onClicked: updater.openWebsite() }
    }

    SettingsSection {
        title: "Software Update"
        settingsAnchor: "check"
        footer: updater.available ? "MIRL PRO checks daily and lets you know when an update is ready."
              : updater.channel.length > 0 ? "" : "This copy of MIRL PRO is updated with your system’s software updates."
        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            SymbolGlyph {
                visible: updater.pendingVersion.length > 0
                symbol: "arrow.down.circle.fill"
                colour: SettingsStyle.accentColour
            }
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 2
                Label {
                    objectName: "versionLine"
                    text: updater.pendingVersion.length > 0 ? "MIRL PRO " + updater.pendingVersion + " is available"
                                                            : "MIRL PRO " + versionText
                    font.weight: Font.DemiBold
                    color: SettingsStyle.textColour
                }
                Label {
                    objectName: "updateStatus"
                    text: { page.now; updater.available; updater.lastCheck; return updater.statusLine() }
                    color: SettingsStyle.secondaryText
                }
                Label {
                    visible: updater.lastProblem.length > 0
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    text: updater.lastProblem
                    color: SettingsStyle.warningColour
                }
            }
            SettingsButton {
                text: updater.pendingVersion.length > 0 ? "Update Now" : "Check for Updates"
                enabled: updater.canCheck
                // The window's palette keeps a disabled label bright; the button fades instead.
                opacity: enabled ? 1 : 0.45
                onClicked: updater.checkForUpdates()
            }
        }
    }

    SettingsSection {
        visible: updater.available
        title: "Automatic Updates"
        settingsAnchor: "automatic"
        SettingsToggle {
            label: "Check for updates automatically"
            checked: updater.automaticallyChecks
            onToggled: on => updater.automaticallyChecks = on
        }
        SettingsToggle {
            label: "Download updates automatically"
            detail: "Updates are checked against their maker's signature before your software installer opens them."
            checked: updater.automaticallyDownloads
            onToggled: on => updater.automaticallyDownloads = on
        }
    }

    SettingsSection {
        title: "Startup"
        SettingsToggle {
            label: "Open at login"
            detail: "Start MIRL PRO when you sign in to your desktop."
            checked: loginItem.enabled
            onToggled: on => loginItem.enabled = on
        }
    }

    SettingsSection {
        title: "Feedback"
        settingsAnchor: "feedback"
        HelpRow {
            heading: "Report a problem"
            detail: "Tell us what happened and what you expected. Your message opens in your mail app."
            SettingsButton {
                text: "Report a Problem…"
                onClicked: settings.composeFeedback(false)
            }
        }
        HelpRow {
            heading: "Share an idea"
            detail: "What would make MIRL PRO better for you?"
            SettingsButton {
                text: "Share an Idea…"
                onClicked: settings.composeFeedback(true)
            }
        }
    }
}
