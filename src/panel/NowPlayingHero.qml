import QtQuick
import MirlPlayer.Surface
import MirlPlayer.Visualizers

// The pieces of the open card and of the library's header bar: the art, the title block, the
// timeline, the transport and the visualizer, each in its glide slot. One view serves both
// places; only the slots' numbers differ.
ContentFade {
    id: hero
    required property var slots
    required property var player
    required property var panel
    required property var theme
    property bool library: false

    enterDelay: 0.1
    enterDuration: 0.24
    leaveDuration: library ? 0.09 : 0.11

    readonly property var style: styles.style

    ControlStyleModel {
        id: styles
        styleID: hero.theme.styleID
    }

    ArtSlot {
        id: artSlot
        player: hero.player
        showVisualizer: hero.theme.showVisualizer
        onOpenLibrary: hero.panel.requestLibrary(true)
    }
    onShownChanged: {
        if (shown)
            artSlot.appear(Qt.rect(art.mapToGlobal(0, 0).x, art.mapToGlobal(0, 0).y,
                                   art.width, art.height))
        else
            artSlot.disappear()
    }

    Item {
        id: art
        objectName: "artSlot"
        x: hero.slots.art.x
        y: hero.slots.art.y
        width: hero.slots.art.width
        height: hero.slots.art.height
        ArtworkView {
            objectName: "artwork"
            anchors.fill: parent
            source: hero.panel.artworkSource
            corner: hero.slots.artCorner
        }
        MouseArea {
            anchors.fill: parent
            hoverEnabled: hero.shown
            cursorShape: Qt.PointingHandCursor
            onPositionChanged: mouse => artSlot.hover(mapToGlobal(mouse.x, mouse.y))
            onEntered: artSlot.hover(mapToGlobal(mouseX, mouseY))
            onClicked: artSlot.tap()
        }
        Accessible.role: Accessible.Button
        Accessible.name: artSlot.label
        Accessible.onPressAction: artSlot.tap()
    }

    NowPlayingTitle {
        objectName: "titleSlot"
        x: hero.slots.title.x
        y: hero.slots.title.y
        width: hero.slots.title.width
        height: hero.slots.title.height
        player: hero.player
        panel: hero.panel
        theme: hero.theme
        large: !hero.theme.showVisualizer && !hero.library
    }

    TimelineBar {
        objectName: "timelineSlot"
        x: hero.slots.timeline.x
        y: hero.slots.timeline.y
        width: hero.slots.timeline.width
        height: hero.slots.timeline.height
        player: hero.player
        theme: hero.theme
        style: hero.style
    }

    TransportCluster {
        objectName: "transportSlot"
        x: hero.slots.transport.x
        y: hero.slots.transport.y
        width: hero.slots.transport.width
        height: hero.slots.transport.height
        player: hero.player
        theme: hero.theme
        style: hero.style
    }

    // The visualizer's place in the card. It arrives scaled up from 0.85 at its leading edge.
    Item {
        id: visualizerSlot
        objectName: "visualizerSlot"
        x: hero.slots.visualizer.x
        y: hero.slots.visualizer.y
        width: hero.slots.visualizer.width
        height: hero.slots.visualizer.height
        readonly property bool shown: hero.theme.showVisualizer && !hero.library
        opacity: shown ? 1 : 0
        scale: shown ? 1 : 0.85
        transformOrigin: Item.Left
        visible: opacity > 0
        Behavior on opacity { NumberAnimation { duration: hero.theme.motionMs(0.24) } }
        Behavior on scale { NumberAnimation { duration: hero.theme.motionMs(0.24); easing.type: Easing.OutQuad } }
        SpectrumView {
            objectName: "visualizer"
            anchors.fill: parent
            vizID: hero.theme.vizID
            levelsStore: visualizerSlot.visible && hero.shown ? hero.player.eqStore : null
            stereoStore: hero.player.stereoStore
            theme: hero.theme
        }
    }
}
