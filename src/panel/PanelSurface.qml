import QtQuick
import QtQuick.Shapes
import MirlPlayer.Visualizers

// The panel's surface: one rounded shape that rests as a pill and grows into the player card.
// The card has two layouts: a column with large artwork when the visualizer is off, and a wide
// row with the artwork, the title block with timeline and transport, and the live levels when it
// is on. It binds to the now-playing model, the panel and the theme, and forwards clicks; every
// rule lives in C++.
Item {
    id: root
    required property var player
    required property var panel
    required property var theme

    readonly property bool open: panel.expanded
    readonly property bool wide: theme.showVisualizer
    readonly property rect shape: open ? panel.cardRect : panel.pillRect
    readonly property real position: player.clock ? player.clock.position : 0
    readonly property var levels: player.eqStore ? player.eqStore.levels : []

    Rectangle {
        id: pill
        x: root.shape.x
        y: root.shape.y
        width: root.shape.width
        height: root.shape.height
        radius: root.open ? 30 : 12
        color: "#0c0c10"
        border.color: Qt.rgba(1, 1, 1, 0.08)
        clip: true

        // A panel whose shape already moves with its springs needs no easing of its own.
        Behavior on x { enabled: !root.panel.animatesShape; NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        Behavior on y { enabled: !root.panel.animatesShape; NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        Behavior on width { enabled: !root.panel.animatesShape; NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        Behavior on height { enabled: !root.panel.animatesShape; NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        Behavior on radius { NumberAnimation { duration: 220 } }

        // The resting pill: a miniature spectrum in the accent with the visualizer on, else the
        // play state.
        Item {
            objectName: "restingIndicator"
            anchors.centerIn: parent
            width: 20
            height: 11
            visible: !root.open
            MiniEQ {
                anchors.fill: parent
                visible: root.wide
                levels: root.wide && !root.open ? root.levels : []
                color: root.player.accent
            }
            TransportGlyph {
                anchors.centerIn: parent
                visible: !root.wide
                kind: root.player.isPlaying ? "pause" : "play"
                size: 9
                ink: root.player.accent
            }
        }

        Item {
            id: card
            anchors.fill: parent
            anchors.leftMargin: 18
            anchors.rightMargin: 18
            anchors.topMargin: 12
            anchors.bottomMargin: 12
            opacity: root.open ? 1 : 0
            visible: opacity > 0
            Behavior on opacity { NumberAnimation { duration: 160 } }

            Rectangle {
                id: art
                readonly property int side: root.wide ? 120 : 180
                x: root.wide ? 0 : (parent.width - side) / 2
                y: root.wide ? (parent.height - side) / 2 : 0
                width: side
                height: side
                radius: root.wide ? 14 : 16
                clip: true
                gradient: Gradient {
                    GradientStop { position: 0; color: Qt.darker(root.player.accent, 1.6) }
                    GradientStop { position: 1; color: "#1b1b22" }
                }
                Image {
                    anchors.fill: parent
                    source: root.panel.artworkSource
                    fillMode: Image.PreserveAspectCrop
                    sourceSize: Qt.size(360, 360)
                    visible: source != ""
                }
            }

            // Title, artist, timeline and transport: beside the art when wide, below it else.
            Column {
                id: details
                x: root.wide ? art.width + 16 : 0
                y: root.wide ? 4 : art.height + 10
                width: root.wide ? 230 : parent.width
                spacing: root.wide ? 2 : 4
                Text {
                    objectName: "title"
                    width: parent.width
                    text: root.player.title
                    color: "white"
                    font.pixelSize: root.wide ? 14 : 17
                    font.weight: root.wide ? Font.DemiBold : Font.Bold
                    elide: Text.ElideRight
                }
                Text {
                    width: parent.width
                    text: root.player.artist
                    color: Qt.rgba(1, 1, 1, 0.6)
                    font.pixelSize: root.wide ? 12 : 13
                    font.weight: root.wide ? Font.Normal : Font.Medium
                    elide: Text.ElideRight
                }
                Item { width: 1; height: root.wide ? 8 : 6 }
                Item {
                    id: timeline
                    width: parent.width
                    height: 26
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

            // The visualizer of the chosen style, drawn from the player's own audio.
            SpectrumView {
                objectName: "visualizer"
                visible: root.wide
                x: details.x + details.width + 16
                width: parent.width - x
                height: art.height
                y: art.y
                vizID: root.theme.vizID
                levelsStore: root.wide && root.open ? root.player.eqStore : null
                stereoStore: root.player.stereoStore
                theme: root.theme
            }
        }
    }

    // Transport symbols drawn as shapes, so they look the same whatever fonts are installed.
    component TransportGlyph: Shape {
        id: glyph
        property string kind // "previous", "play", "pause", "next"
        property int size: 14
        property color ink: "white"
        width: size
        height: size
        scale: kind === "previous" ? -1 : 1
        ShapePath {
            strokeWidth: 0
            fillColor: glyph.ink
            startX: 0; startY: 0
            // play: one triangle; next/previous: a smaller triangle and a bar; pause: two bars
            PathSvg {
                path: {
                    const s = glyph.size
                    if (glyph.kind === "pause")
                        return "M %1 0 h %2 v %3 h -%2 Z M %4 0 h %2 v %3 h -%2 Z"
                            .arg(s * 0.15).arg(s * 0.25).arg(s).arg(s * 0.6)
                    if (glyph.kind === "play")
                        return "M %1 0 L %2 %3 L %1 %4 Z".arg(s * 0.1).arg(s).arg(s / 2).arg(s)
                    return "M 0 0 L %1 %2 L 0 %3 Z M %4 0 h %5 v %3 h -%5 Z"
                        .arg(s * 0.75).arg(s / 2).arg(s).arg(s * 0.8).arg(s * 0.2)
                }
            }
        }
    }

    component TransportButton: Item {
        id: button
        property alias kind: glyph.kind
        property alias size: glyph.size
        signal clicked
        width: 32
        height: 32
        TransportGlyph {
            id: glyph
            anchors.centerIn: parent
            ink: area.pressed ? Qt.rgba(1, 1, 1, 0.5) : "white"
        }
        MouseArea {
            id: area
            anchors.fill: parent
            onClicked: button.clicked()
        }
    }
}
