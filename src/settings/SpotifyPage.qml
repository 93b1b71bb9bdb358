import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// The Spotify account: connect, reconnect, disconnect, the app in use and the library cache.
// The setup guide takes the page's place while it is open.
ColumnLayout {
    id: page
    spacing: 4
    property bool guideOpen: false
    Component.onDestruction: account.pageLeft()

    SpotifyGuide {
        visible: page.guideOpen
        Layout.fillWidth: true
        onBack: page.guideOpen = false
    }

    ColumnLayout {
        visible: !page.guideOpen
        Layout.fillWidth: true
        spacing: 4

        SettingsSection {
            title: "Spotify account"
            settingsAnchor: "account"
            RowLayout {
                Layout.fillWidth: true
                Rectangle {
                    width: 10; height: 10; radius: 5
                    color: account.statusText === "Connected" ? SettingsStyle.goodColour
                         : account.connected ? SettingsStyle.warningColour
                         : SettingsStyle.secondaryText
                }
                Label {
                    objectName: "spotifyStatus"
                    Layout.fillWidth: true
                    text: account.statusText
                    font.weight: Font.DemiBold
                    color: SettingsStyle.textColour
                }
                SettingsButton {
                    text: account.mainButton
                    highlighted: !account.connected
                    enabled: account.hasClientID || spotify.connecting
                    onClicked: account.mainAction()
                }
                SettingsButton {
                    visible: account.connected
                    text: "Disconnect"
                    onClicked: confirm.open()
                }
            }
            Label {
                Layout.fillWidth: true
                text: account.explanation
                wrapMode: Text.WordWrap
                color: SettingsStyle.secondaryText
            }
            Label {
                visible: spotify.connectionError.length > 0
                Layout.fillWidth: true
                text: spotify.connectionError
                wrapMode: Text.WordWrap
                color: SettingsStyle.warningColour
            }
            Rectangle { Layout.fillWidth: true; height: 1; color: SettingsStyle.separatorColour }
            RowLayout {
                Layout.fillWidth: true
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 2
                    Label { text: "Spotify app"; color: SettingsStyle.textColour }
                    Label {
                        text: account.appText
                        color: SettingsStyle.secondaryText
                        font.pixelSize: 11
                    }
                }
                SettingsButton {
                    visible: account.ownApp
                    text: "Change…"
                    onClicked: page.guideOpen = true
                }
            }
            ColumnLayout {
                visible: !account.hasClientID
                Layout.fillWidth: true
                Label {
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    color: SettingsStyle.textColour
                    text: "Create a free app entry on Spotify’s website, copy its Client ID, then connect here. You only fill in a form; no coding is needed."
                }
                Label {
                    text: "Spotify Premium · About 2 minutes · One-time setup"
                    color: SettingsStyle.secondaryText
                    font.pixelSize: 11
                }
                SettingsButton {
                    objectName: "showGuide"
                    text: "Show step-by-step setup"
                    highlighted: true
                    onClicked: page.guideOpen = true
                }
            }
        }

        SettingsSection {
            title: "Library cache"
            RowLayout {
                Layout.fillWidth: true
                ColumnLayout {
                    Layout.fillWidth: true
                    Label {
                        Layout.fillWidth: true
                        wrapMode: Text.WordWrap
                        color: SettingsStyle.textColour
                        text: "Remembers saved songs, browsed lists and your place. Clear it to fetch a fresh copy from Spotify; your music stays in Spotify."
                    }
                    Label {
                        text: account.cacheCleared ? "Cache cleared" : "Saved locally on this computer"
                        color: SettingsStyle.secondaryText
                        font.pixelSize: 11
                    }
                }
                SettingsButton { text: "Clear Cache"; onClicked: account.clearCache() }
            }
        }
    }

    Dialog {
        id: confirm
        x: (page.width - width) / 2
        y: 80
        modal: true
        title: "Disconnect Spotify from MIRL PRO?"
        Label {
            width: 320
            wrapMode: Text.WordWrap
            text: "Your library and liked songs stay in Spotify. You can connect again at any time."
        }
        footer: DialogButtonBox {
            SettingsButton { text: "Cancel"; DialogButtonBox.buttonRole: DialogButtonBox.RejectRole }
            SettingsButton {
                text: "Disconnect"
                destructive: true
                DialogButtonBox.buttonRole: DialogButtonBox.DestructiveRole
                onClicked: { account.disconnect(); confirm.close() }
            }
        }
    }
}
