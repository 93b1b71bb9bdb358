import QtQuick
import QtQuick.Layouts

StepPage {
    intro: setup.spotifyConnected
           ? "Move your pointer onto the album cover and keep it there briefly. Your Spotify library opens automatically—no click needed."
           : "First connect your account in Settings → Spotify. Then hold your pointer over the album cover to open your library."

    FeatureRow {
        symbol: "arrow.uturn.backward"
        text: "Browse playlists, Liked Songs, albums and artists. Hover over Player or press Esc to return to playback controls."
    }

    Rectangle {
        visible: !setup.spotifyConnected
        Layout.fillWidth: true
        Layout.topMargin: 6
        implicitHeight: offer.implicitHeight + 32
        radius: 14
        color: SetupStyle.cardColour
        border.color: SetupStyle.separatorColour
        ColumnLayout {
            id: offer
            anchors.fill: parent
            anchors.margins: 16
            spacing: 12
            Text {
                Layout.fillWidth: true
                text: "Optional · Spotify Premium required. Allow about 2 minutes to create your own Spotify app with our step-by-step guide."
                color: SetupStyle.secondaryText
                font.pixelSize: SetupStyle.bodySize
                wrapMode: Text.WordWrap
            }
            RowLayout {
                spacing: 14
                SetupButton {
                    text: "Set up Spotify now"
                    symbol: "arrow.up.forward.app"
                    primary: true
                    onClicked: setup.openSettings("spotify")
                }
                Text {
                    text: "Or later, in Settings → Spotify."
                    color: SetupStyle.tertiaryText
                    font.pixelSize: SetupStyle.smallSize + 1
                }
            }
        }
    }
}
