import QtQuick
import QtQuick.Layouts

StepPage {
    intro: "In Spotify in MIRL, double-click a song row—or double-tap your touchpad—to add it to Liked Songs without changing what’s playing."

    FeatureRow {
        symbol: "play.fill"
        text: "Single-click a song to play it from the list you’re browsing."
    }
    FeatureRow {
        symbol: "heart.fill"
        tint: SetupStyle.heartColour
        text: "A green heart means it’s liked. Click the heart to like or unlike."
    }
    FeatureRow {
        symbol: "person.fill"
        text: "Click an artist’s name under a song or in the playback bar to explore their music."
    }
}
