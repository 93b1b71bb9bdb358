import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts
import MirlPlayer.Look

// The player, its glass, its light and its motion. Every control writes into the Theme or
// VizConfig at once, so the panel changes while the user watches.
ColumnLayout {
    spacing: 4
    readonly property bool glass: Theme.effectiveBackgroundID !== "solid"
    readonly property bool frosted: Theme.effectiveBackgroundID === "frosted"

    SettingsSection {
        title: "Player"
        settingsAnchor: "player"
        footer: "In fullscreen, MIRL PRO rests in the top-right strip and expands on hover."
        Label { text: "Control style"; color: SettingsStyle.textColour }
        ChoiceGrid {
            objectName: "controlStyle"
            choices: Theme.playerStyleChoices
            current: Theme.styleID
            onChosen: id => Theme.styleID = id
        }
        RowLayout {
            Label { text: "Position"; color: SettingsStyle.textColour; Layout.fillWidth: true }
            Segmented {
                choices: [{ id: "notch", title: "Under notch" }, { id: "right", title: "Right corner" }]
                current: Theme.positionID
                onChosen: id => Theme.positionID = id
            }
        }
    }

    SettingsSection {
        title: "Player background"
        settingsAnchor: "background"
        footer: transparency.active
            ? (transparency.desktopDecides
               ? "High contrast is on in your desktop’s accessibility settings. MIRL PRO uses a solid background until it’s turned off."
               : "Reduce transparency is on. MIRL PRO uses a solid background until it’s turned off.")
            : Theme.backgroundStyleID === "solid"
            ? "A plain opaque card. Pick a glass material to let the desktop through."
            : Theme.backgroundStyleID === "liquid"
              ? "Move from clear glass to a smoky tint for easier-to-read controls."
              : "Adjust from light frost to a deeper tint. Glass stays visible at every setting."
        Segmented {
            objectName: "background"
            enabled: !transparency.active
            choices: Theme.backgroundChoices
            current: Theme.backgroundStyleID
            onChosen: id => Theme.backgroundStyleID = id
        }
        ColumnLayout {
            visible: glass
            Layout.fillWidth: true
            RowLayout {
                Label { text: "Glass tint"; color: SettingsStyle.textColour; Layout.preferredWidth: 110 }
                Label { text: "Clear"; color: SettingsStyle.secondaryText }
                Slider {
                    id: tint
                    Layout.fillWidth: true
                    value: Theme.currentGlassOpacity
                    onMoved: Theme.currentGlassOpacity = value
                    Accessible.name: "Glass tint"
                    Accessible.description: Math.round(value * 100) + " percent tint"
                }
                Label { text: "Tinted"; color: SettingsStyle.secondaryText }
                Label {
                    text: Math.round(tint.value * 100) + "%"
                    color: SettingsStyle.secondaryText
                    Layout.preferredWidth: 40
                    horizontalAlignment: Text.AlignRight
                }
            }
            Label {
                text: "0%: clear glass. 100%: tinted glass."
                color: SettingsStyle.secondaryText
                font.pixelSize: 11
            }
        }
        SettingsToggle {
            // A desktop with its own setting decides; elsewhere this switch does.
            visible: !transparency.desktopDecides
            label: "Reduce transparency"
            detail: "Use solid surfaces for the player and this window, whatever background is chosen."
            checked: transparency.ownSetting
            onToggled: on => transparency.ownSetting = on
        }
    }

    SettingsSection {
        title: "Light reflection"
        settingsAnchor: "reflection"
        SettingsToggle {
            enabled: frosted
            label: Theme.showVisualizer ? "Reflect visualizer colours" : "Light along the edges"
            detail: !frosted ? "Available with a Frosted glass background."
                : Theme.showVisualizer ? "Let the visualizer cast a soft glow inside the glass."
                : "Let the music glow along the edges of the card, in your visualizer colours: the bass along the bottom, the highs along the top."
                  + (audioCapture.enabled ? "" : " Turn on music access under Audio to use it.")
            checked: Theme.showVisualizer ? Theme.glassReflection : Theme.edgeReflection
            onToggled: on => Theme.showVisualizer ? (Theme.glassReflection = on)
                                                  : (Theme.edgeReflection = on)
        }
        Collapsible {
            title: "Adjust reflection"
            open: settings.reflectionTuning
            onOpenToggled: o => settings.reflectionTuning = o
            TuningList { library: false }
        }
        Collapsible {
            settingsAnchor: "libraryReflection"
            title: "Adjust reflection in Spotify library"
            open: settings.libraryReflectionTuning
            onOpenToggled: o => settings.libraryReflectionTuning = o
            Label {
                text: "Applies only while the Spotify library is open."
                color: SettingsStyle.secondaryText
                font.pixelSize: 11
            }
            TuningList { library: true }
        }
    }

    SettingsSection {
        title: "Text and controls"
        settingsAnchor: "ink"
        footer: "Automatic uses white with album artwork, or matches your chosen visualizer colour."
        SwatchRow {
            choices: Theme.inkChoices
            current: Theme.inkID
            onChosen: id => Theme.inkID = id
        }
    }

    SettingsSection {
        title: "Motion"
        settingsAnchor: "motion"
        footer: "How fast MIRL PRO opens, closes and moves between the player and your library."
        RowLayout {
            Label { text: "Motion speed"; color: SettingsStyle.textColour; Layout.preferredWidth: 110 }
            Label { text: "Relaxed"; color: SettingsStyle.secondaryText }
            Slider {
                id: motion
                Layout.fillWidth: true
                from: 0.5; to: 2.0; stepSize: 0.25
                snapMode: Slider.SnapAlways
                value: Theme.motionSpeed
                onMoved: Theme.motionSpeed = value
                Accessible.name: "Motion speed"
                Accessible.description: Number(value.toPrecision(2)) + " times"
            }
            Label { text: "Snappy"; color: SettingsStyle.secondaryText }
            Label {
                text: Number(motion.value.toPrecision(2)) + "×"
                color: SettingsStyle.secondaryText
                Layout.preferredWidth: 40
                horizontalAlignment: Text.AlignRight
            }
        }
    }
}
