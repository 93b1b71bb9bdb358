import QtQuick
import MirlPlayer.Surface

// Previous, play or pause, next: the same three commands in every style, drawn by the style's
// transport piece.
Item {
    id: cluster
    required property var player
    required property var theme
    required property var style

    Row {
        anchors.centerIn: parent
        // Half the room in the library's narrow bar.
        spacing: (cluster.width < 200 ? 0.5 : 1)
                 * (cluster.style.piece === "pixel" ? 22
                    : cluster.style.piece === "chip" || cluster.style.id === "cassette" ? 8 : 26)
        TransportButton {
            objectName: "previousButton"
            action: "previous"
            player: cluster.player
            theme: cluster.theme
            style: cluster.style
        }
        TransportButton {
            objectName: "playPauseButton"
            action: "playPause"
            player: cluster.player
            theme: cluster.theme
            style: cluster.style
        }
        TransportButton {
            objectName: "nextButton"
            action: "next"
            player: cluster.player
            theme: cluster.theme
            style: cluster.style
        }
    }
}
