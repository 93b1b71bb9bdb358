import QtQuick
import QtQuick.Layouts

StepPage {
    intro: "Choose the music app you use and click Allow beside it. MIRL PRO starts it if it isn't open and checks that it answers. A green check means playback controls are ready."

    Repeater {
        model: setup.apps
        delegate: PlayerRow {
            required property var modelData
            player: modelData
        }
    }
    Text {
        Layout.fillWidth: true
        Layout.topMargin: 6
        text: "Only one music app is needed. Spotify library browsing is a separate, optional step."
        color: SetupStyle.tertiaryText
        font.pixelSize: SetupStyle.smallSize + 1
        wrapMode: Text.WordWrap
    }
}
