import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// The walk through Spotify's app form, ending with the client ID and the sign-in.
ColumnLayout {
    id: guide
    signal back()
    spacing: 4
    property string idError

    Button { text: "‹ Back to account"; flat: true; onClicked: guide.back() }
    Label { text: "Spotify setup guide"; color: SettingsStyle.secondaryText }
    Label { text: "Connect your Spotify library"; font.pixelSize: 18; font.weight: Font.DemiBold; color: SettingsStyle.textColour }
    Label { text: "Spotify Premium · About 2 minutes · One-time setup"; color: SettingsStyle.secondaryText; font.pixelSize: 11 }
    Label {
        Layout.fillWidth: true
        wrapMode: Text.WordWrap
        color: SettingsStyle.textColour
        text: "A Spotify app is just an entry you create on Spotify’s website to connect your account to MIRL. It is free to create and needs no coding. Keep MIRL open while you follow these steps in your browser."
    }

    GuideStep {
        number: 1
        heading: "Open the Spotify Developer Dashboard"
        detail: "Sign in with the same Spotify Premium account you use in the Spotify app on this computer. If this is your first visit, read and accept Spotify’s developer terms."
        SettingsButton { text: "Open Dashboard"; onClicked: Qt.openUrlExternally("https://developer.spotify.com/dashboard") }
    }
    GuideStep {
        number: 2
        heading: "Create an app"
        detail: "Click Create app. Fill in the form below using the Copy buttons, then paste each value into the matching field on Spotify’s website."
        CopyField { label: "App name"; value: "MIRL PRO" }
        CopyField { label: "App description"; value: "MIRL PRO music player on my computer" }
        CopyField {
            label: "Redirect URI"
            value: "http://127.0.0.1:43821/callback"
            note: "This address sends the sign-in back to MIRL on your computer. Paste it exactly, click Add, and keep 127.0.0.1 as written."
        }
        Label { text: "Website: leave this optional field empty."; color: SettingsStyle.secondaryText; Layout.fillWidth: true; wrapMode: Text.WordWrap }
        Label {
            Layout.fillWidth: true
            wrapMode: Text.WordWrap
            textFormat: Text.StyledText
            color: SettingsStyle.secondaryText
            text: "Under “Which API/SDKs are you planning to use?”, select <b>Web API</b>. Read and accept the terms, then click <b>Save</b>. Your new app should now appear in the Dashboard."
        }
    }
    GuideStep {
        number: 3
        heading: "Paste your Client ID"
        detail: "Open the app you just created in the Dashboard. Open Settings if needed, then find Client ID under Basic Information. Copy that 32-character value, return to this MIRL window and click Paste. Use Client ID, not Client Secret."
        RowLayout {
            Layout.fillWidth: true
            TextField {
                id: idField
                objectName: "clientIDField"
                Layout.fillWidth: true
                placeholderText: "32 letters and numbers"
                onTextEdited: guide.idError = ""
            }
            SettingsButton { text: "Paste"; onClicked: { idField.clear(); idField.paste() } }
        }
        Label {
            visible: guide.idError.length > 0
            Layout.fillWidth: true
            wrapMode: Text.WordWrap
            text: guide.idError
            color: SettingsStyle.warningColour
        }
    }
    GuideStep {
        number: 4
        heading: "Approve MIRL PRO"
        detail: "Click Connect Spotify below. In your browser, check that the correct Spotify account is signed in, review the requested access and click Agree. Keep MIRL running until the browser confirms the connection, then return here and look for the green Connected status."
        RowLayout {
            SettingsButton {
                visible: !spotify.connecting && !spotify.connected
                text: "Connect Spotify"
                highlighted: true
                onClicked: {
                    const wasConnected = spotify.connected
                    guide.idError = account.submitClientID(idField.text)
                    if (guide.idError.length === 0 && wasConnected)
                        guide.back()
                }
            }
            Label { visible: spotify.connecting; text: "Waiting for your browser…"; color: SettingsStyle.secondaryText }
            SettingsButton { visible: spotify.connecting; text: "Cancel"; onClicked: spotify.endSignInFlow() }
            Label { visible: spotify.connected; text: "Connected"; color: SettingsStyle.goodColour }
        }
        Label {
            Layout.fillWidth: true
            wrapMode: Text.WordWrap
            color: SettingsStyle.secondaryText
            text: "Your connection is saved. You do not need to create another Spotify app each time you open MIRL."
        }
    }
    GuideStep {
        number: 5
        heading: "Open your library"
        detail: "Open the Spotify desktop app and play a song. Hover near the top of your screen to open MIRL, then keep your pointer over the album cover briefly. Your Spotify library opens automatically."
    }

    SettingsSection {
        title: "If something goes wrong"
        HelpRow { heading: "“INVALID_CLIENT: Invalid redirect URI”"; detail: "The Redirect URI in your app doesn’t match. Copy it again from step 2, click Add, then Save." }
        HelpRow { heading: "“User not registered in the Developer Dashboard”"; detail: "Open your app → User Management and add the email address of your Spotify account." }
        HelpRow { heading: "Nothing loads, or “Spotify refused this”"; detail: "Apps you create yourself only work with Spotify Premium, on the account that owns the app." }
    }
}
