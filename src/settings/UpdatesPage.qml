import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// Updates come with the system's packages in this build; feedback goes by e-mail. Opening at
// login lives here too.
ColumnLayout {
    spacing: 4

    SettingsSection {
        title: "Software Update"
        settingsAnchor: "check"
        footer: "This copy of MIRL PRO is updated with your system’s software updates."
        Label {
            objectName: "versionLine"
            text: "MIRL PRO " + versionText
            font.weight: Font.DemiBold
            color: SettingsStyle.textColour
        }
        Label {
            text: "Updates aren't set up in this build."
            color: SettingsStyle.secondaryText
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
            Button {
                text: "Report a Problem…"
                onClicked: settings.composeFeedback(false)
            }
        }
        HelpRow {
            heading: "Share an idea"
            detail: "What would make MIRL PRO better for you?"
            Button {
                text: "Share an Idea…"
                onClicked: settings.composeFeedback(true)
            }
        }
    }
}
