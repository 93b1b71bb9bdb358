import QtQuick
import MirlPlayer.Surface
import Qt5Compat.GraphicalEffects

// The cover, filling its square and clipped to its rounded corners (a real rounded clip: the
// corners outside the curve stay transparent). Without a cover: a faint rounded square with a
// note.
Item {
    id: view
    property string source: ""
    property real corner: 16

    readonly property bool hasImage: source !== "" && image.status === Image.Ready

    Image {
        id: image
        anchors.fill: parent
        source: view.source
        fillMode: Image.PreserveAspectCrop
        sourceSize: Qt.size(360, 360)
        visible: false
        asynchronous: false
    }
    Rectangle {
        id: mask
        anchors.fill: parent
        radius: view.corner
        visible: false
    }
    OpacityMask {
        objectName: "roundedArtwork"
        anchors.fill: parent
        visible: view.hasImage
        source: image
        maskSource: mask
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
