import QtQuick
import MirlPlayer.Library

// A sidebar name: plain text while it fits or the row rests; a name too long glides while the
// row is hovered, between soft edges, and eases to a stop afterwards.
Item {
    id: name
    property string text
    property bool active: false
    property bool selected: false
    property color color: "white"
    property int weight: Font.Normal

    implicitHeight: idle.implicitHeight
    clip: true

    SidebarMarquee {
        id: marquee
        active: name.active
        textWidth: idle.implicitWidth
        width: name.width
    }
    Text {
        id: idle
        width: parent.width
        text: name.text
        color: name.color
        font.pixelSize: 12
        font.weight: name.weight
        elide: Text.ElideRight
        visible: !marquee.gliding
    }
    Row {
        x: -marquee.offset
        visible: marquee.gliding
        spacing: 0
        Repeater {
            model: marquee.gliding ? 3 : 0
            Text {
                width: marquee.stride
                text: name.text
                color: name.color
                font.pixelSize: 12
                font.weight: name.weight
            }
        }
    }
}
