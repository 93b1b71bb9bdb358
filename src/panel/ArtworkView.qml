import QtQuick
import MirlPlayer.Surface

// The cover, filling its square and clipped to its rounded corners (a real rounded clip: the
// corners outside the curve stay transparent), one picture painted when it changes. Without a
// cover: a faint rounded square with a note.
Item {
    id: view
    property string source: ""
    property real corner: 16

    readonly property bool hasImage: image.ready

    RoundedArtwork {
        id: image
        objectName: "roundedArtwork"
        anchors.fill: parent
        visible: view.hasImage
        source: view.source
        corner: view.corner
    }
    Rectangle {
        objectName: "artPlaceholder"
        anchors.fill: parent
        visible: !view.hasImage
        radius: view.corner
        color: Qt.rgba(1, 1, 1, 0.08)
        SymbolGlyph {
            anchors.centerIn: parent
            kind: "note"
            size: 0.3 * Math.min(view.width, view.height)
            ink: Qt.rgba(1, 1, 1, 0.4)
        }
    }
}
