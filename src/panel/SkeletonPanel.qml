import QtQuick
import QtQuick.Shapes

// The first, simple panel: the resting pill at the top centre, which grows into a card with
// artwork, title, artist, a timeline and the transport. It binds to the now-playing model and
// forwards clicks; every rule lives in C++.
Item {
    id: root
    required property var player
    required property var panel

    readonly property bool open: panel.expanded
    readonly property rect shape: open ? panel.cardRect : panel.pillRect
    readonly property real position: player.clock ? player.clock.position : 0

    Rectangle {
        id: pill
        x: root.shape.x
        y: root.shape.y
        width: root.shape.width
        height: root.shape.height
        radius: root.open ? 22 : height / 2
        color: "#0c0c10"
        border.color: Qt.rgba(1, 1, 1, 0.08)
        clip: true

        // A panel whose shape already moves with its springs needs no easing of its own.
        Behavior on x { enabled: !root.panel.animatesShape; NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        Behavior on y { enabled: !root.panel.animatesShape; NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        Behavior on width { enabled: !root.panel.animatesShape; NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        Behavior on height { enabled: !root.panel.animatesShape; NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        Behavior on radius { NumberAnimation { duration: 220 } }

        // The resting pill: three small bars in the artwork's colour, dim while paused.
        Row {
            anchors.centerIn: parent
            spacing: 3
            visible: !root.open
            opacity: root.player.isPlaying ? 1 : 0.35
            Repeater {
                model: [8, 12, 6]
                Rectangle {
                    required property int modelData
                    width: 3
                    height: modelData
                    radius: 1.5
                    anchors.verticalCenter: parent.verticalCenter
                    color: root.player.accent
                }
            }
        }

        Item {
            id: card
            anchors.fill: parent
            anchors.margins: 16
            opacity: root.open ? 1 : 0
            visible: opacity > 0
            Behavior on opacity { NumberAnimation { duration: 160 } }

            Rectangle {
                id: art
                width: parent.width
                height: 176
                radius: 12
                clip: true
                gradient: Gradient {
                    GradientStop { position: 0; color: Qt.darker(root.player.accent, 1.6) }
                    GradientStop { position: 1; color: "#1b1b22" }
                }
                Image {
                    anchors.fill: parent
                    source: root.panel.artworkSource
                    fillMode: Image.PreserveAspectCrop
                    sourceSize: Qt.size(width * 2, height * 2)
                    visible: source != ""
                }
            }

            Text {
                id: title
                anchors.top: art.bottom
                anchors.topMargin: 14
                width: parent.width
                text: root.player.title
                color: "white"
                font.pixelSize: 16
                font.bold: true
                elide: Text.ElideRight
            }
            Text {
                id: artist
                anchors.top: title.bottom
                anchors.topMargin: 2
                width: parent.width
                text: root.player.artist
                color: Qt.rgba(1, 1, 1, 0.6)
                font.pixelSize: 13
                elide: Text.ElideRight
            }

            Item {
                id: timeline
                anchors.top: artist.bottom
                anchors.topMargin: 14
                width: parent.width
                height: 22
                readonly property real fraction: root.player.duration > 0
                                                 ? Math.min(1, root.position / root.player.duration) : 0
                Rectangle {
                    id: track
                    width: parent.width
                    height: 4
                    radius: 2
                    color: Qt.rgba(1, 1, 1, 0.18)
                    Rectangle {
                        width: parent.width * timeline.fraction
                        height: parent.height
                        radius: 2
                        color: root.player.accent
                    }
                }
                Text {
                    anchors.left: parent.left
                    anchors.bottom: parent.bottom
                    text: root.panel.formatTime(root.position)
                    color: Qt.rgba(1, 1, 1, 0.55)
                    font.pixelSize: 10
                }
                Text {
                    anchors.right: parent.right
                    anchors.bottom: parent.bottom
                    text: root.panel.formatTime(root.player.duration)
                    color: Qt.rgba(1, 1, 1, 0.55)
                    font.pixelSize: 10
                }
                MouseArea {
                    width: parent.width
                    height: 12
                    anchors.verticalCenter: track.verticalCenter
                    enabled: root.player.duration > 0
                    onClicked: mouse => root.player.seek(mouse.x / width * root.player.duration)
                }
            }

            Row {
                anchors.top: timeline.bottom
                anchors.topMargin: 6
                anchors.horizontalCenter: parent.horizontalCenter
                spacing: 30
                TransportButton {
                    objectName: "previousButton"
                    kind: "previous"
                    onClicked: root.player.previous()
                }
                TransportButton {
                    objectName: "playPauseButton"
                    kind: root.player.isPlaying ? "pause" : "play"
                    size: 20
                    onClicked: root.player.togglePlayPause()
                }
                TransportButton {
                    objectName: "nextButton"
                    kind: "next"
                    onClicked: root.player.next()
                }
            }
        }
    }

    // Transport symbols drawn as shapes, so they look the same whatever fonts are installed.
    component TransportButton: Item {
        id: button
        property string kind // "previous", "play", "pause", "next"
        property int size: 14
        signal clicked
        width: 32
        height: 32
        Shape {
            id: glyph
            anchors.centerIn: parent
            width: button.size
            height: button.size
            scale: button.kind === "previous" ? -1 : 1
            readonly property color ink: area.pressed ? Qt.rgba(1, 1, 1, 0.5) : "white"
            ShapePath {
                strokeWidth: 0
                fillColor: glyph.ink
                startX: 0; startY: 0
                // play: one triangle; next/previous: a smaller triangle and a bar; pause: two bars
                PathSvg {
                    path: {
                        const s = button.size
                        if (button.kind === "pause")
                            return "M %1 0 h %2 v %3 h -%2 Z M %4 0 h %2 v %3 h -%2 Z"
                                .arg(s * 0.15).arg(s * 0.25).arg(s).arg(s * 0.6)
                        if (button.kind === "play")
                            return "M %1 0 L %2 %3 L %1 %4 Z".arg(s * 0.1).arg(s).arg(s / 2).arg(s)
                        return "M 0 0 L %1 %2 L 0 %3 Z M %4 0 h %5 v %3 h -%5 Z"
                            .arg(s * 0.75).arg(s / 2).arg(s).arg(s * 0.8).arg(s * 0.2)
                    }
                }
            }
        }
        MouseArea {
            id: area
            anchors.fill: parent
            onClicked: button.clicked()
        }
    }
}
