import QtQuick
import MirlPlayer.Surface

// The panel's surface: one rounded shape that rests as a pill, grows into the player card and
// widens into the library. The art, the title block, the timeline, the transport and the
// visualizer glide between named places (SurfaceSlots) as the shape changes; the material behind
// them is the PlayerBackdrop. Binds to the now-playing model, the panel and the theme, and
// forwards clicks; every rule lives in C++.
Item {
    id: root
    required property var player
    required property var panel
    required property var theme

    readonly property bool open: panel.expanded
    readonly property bool libraryOpen: open && panel.libraryOpen === true
    readonly property bool wide: theme.showVisualizer
    // The resting pill is shown by a layer of its own: the pill here holds still beneath it.
    readonly property bool overlaid: panel.pillOverlaid === true
    readonly property rect shape: panel.cardRect
    readonly property string arrangement: !open ? "pill"
                                                : libraryOpen ? "library"
                                                              : wide ? "visualizer" : "artwork"

    SurfaceSlots {
        id: slots
        objectName: "slots"
        arrangement: root.arrangement
        layout: root.panel.layout ? root.panel.layout : null
        motionSpeed: root.theme.motionSpeed
    }

    BackdropRules {
        id: rules
        theme: root.theme
        hasLevels: root.player.eqStore !== null
        glassAvailable: root.panel.glassAvailable === true
    }

    Item {
        id: surface
        objectName: "surface"
        x: root.shape.x
        y: root.shape.y
        width: root.shape.width
        height: root.shape.height
        readonly property real corner: root.panel.cornerRadius !== undefined
                                       ? root.panel.cornerRadius : (root.open ? 30 : 12)

        PlayerBackdrop {
            anchors.fill: parent
            rules: rules
            cornerRadius: surface.corner
            accent: root.player.accent
            levels: root.overlaid ? null : root.player.eqStore
            theme: root.theme
            libraryOpen: root.libraryOpen
        }

        // The resting pill: one indicator in its 20 x 11 box, the "art" place of the shape.
        CollapsedPillView {
            objectName: "restingIndicator"
            x: (surface.width - width) / 2
            y: (surface.height - height) / 2
            shown: !root.open
            live: !root.overlaid
            player: root.player
            theme: root.theme
        }

        // The library's place below its header bar, unpadded: the library view stands here.
        ContentFade {
            id: libraryContent
            objectName: "libraryContent"
            y: 84
            width: surface.width
            height: Math.max(0, surface.height - 84)
            shown: root.libraryOpen
            theme: root.theme
            // Built while the library shows (or fades out) and let go afterwards: its lists keep
            // their places in the browser, not here.
            Loader {
                anchors.fill: parent
                active: (root.libraryOpen || libraryContent.visible)
                        && root.panel.libraryView !== undefined && root.panel.libraryView != ""
                source: active ? root.panel.libraryView : ""
                onLoaded: {
                    item.player = root.player
                    item.panel = root.panel
                    item.forceActiveFocus()
                }
            }
        }

        // The open card, or the library's header bar: one set of pieces in their glide slots.
        NowPlayingHero {
            id: hero
            anchors.fill: parent
            shown: root.open
            library: root.libraryOpen
            slots: slots
            player: root.player
            panel: root.panel
            theme: root.theme
        }
    }
}
