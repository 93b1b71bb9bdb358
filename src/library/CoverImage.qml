import QtQuick
import Qt5Compat.GraphicalEffects

// A cover from the cover cache (each address fetched and decoded once for every row that shows
// it), or a symbol on a soft square while there is none.
Item {
    id: cover
    property url url
    property string symbol: "♪"
    property real symbolSize: 10
    property real corner: 4

    Rectangle {
        anchors.fill: parent
        radius: cover.corner
        color: Qt.rgba(1, 1, 1, 0.08)
        visible: image.status !== Image.Ready
        Text {
            anchors.centerIn: parent
            text: cover.symbol
            color: Qt.rgba(1, 1, 1, 0.4)
            font.pixelSize: cover.symbolSize
        }
    }
    Image {
        id: image
        anchors.fill: parent
        asynchronous: true
        fillMode: Image.PreserveAspectCrop
        sourceSize: Qt.size(Math.ceil(cover.width * 2), Math.ceil(cover.height * 2))
        source: cover.url.toString() !== ""
                ? "image://cover/" + encodeURIComponent(cover.url.toString()) : ""
        visible: status === Image.Ready
        // Large covers are rounded (an artist's picture round); a list's small ones stay square,
        // so that scrolling builds no layer per row.
        layer.enabled: cover.corner >= 8 && visible
        layer.effect: OpacityMask {
            maskSource: Rectangle {
                width: image.width
                height: image.height
                radius: cover.corner
            }
        }
    }
}
