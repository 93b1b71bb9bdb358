import QtQuick
import MirlPlayer.Surface

// Two reels that turn while the music plays, the tape running between them: the left reel holds
// what is still to play, the right one what has played.
Item {
    id: tape
    readonly property var bar: parent.host
    readonly property bool turning: bar.player.isPlaying && visible
    property real angle: 0

    // The reels turn with a tick of 1/30 s, and only while playing.
    Timer {
        interval: 33
        repeat: true
        running: tape.turning
        onTriggered: tape.angle = (tape.angle + 6) % 360
    }
    Rectangle {
        anchors.fill: parent
        radius: 4
        color: Qt.rgba(1, 1, 1, 0.06)
        border.color: Qt.rgba(tape.bar.ink.r, tape.bar.ink.g, tape.bar.ink.b, 0.25)
    }
    Rectangle {
        x: 22
        width: tape.width - 44
        y: tape.height / 2 - 1
        height: 2
        color: Qt.rgba(0.45, 0.32, 0.2, 1)
    }
    Reel { x: 4; fill: 1 - tape.bar.fraction }
    Reel { x: tape.width - 4 - width; fill: tape.bar.fraction }

    component Reel: Item {
        property real fill: 0.5
        width: 20
        height: 20
        y: (tape.height - height) / 2
        Rectangle {
            anchors.centerIn: parent
            width: 10 + 10 * parent.fill
            height: width
            radius: width / 2
            color: Qt.rgba(0.3, 0.22, 0.15, 1)
        }
        Rectangle {
            anchors.centerIn: parent
            width: 10
            height: 10
            radius: 5
            color: "transparent"
            border.color: tape.bar.ink
            border.width: 1.5
            rotation: tape.angle
            Rectangle { anchors.centerIn: parent; width: 8; height: 1.5; color: tape.bar.ink }
            Rectangle { anchors.centerIn: parent; width: 1.5; height: 8; color: tape.bar.ink }
        }
    }
}
