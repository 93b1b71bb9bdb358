import QtQuick
import QtQuick.Layouts

StepPage {
    intro: "Drag an album, playlist or artist into Your Music in the library sidebar. Drop it where you want it to appear."

    FeatureRow {
        symbol: "hand.draw"
        text: "Drag a favourite from the library into the sidebar to pin it."
    }
    FeatureRow {
        symbol: "arrow.up.arrow.down"
        text: "Drag shortcuts up or down to put them in your order."
    }
    FeatureRow {
        symbol: "arrow.up.right"
        text: "Drag a pinned item out to remove the shortcut. Your music stays in Spotify."
    }
}
