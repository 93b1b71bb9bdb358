import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts
import MirlPlayer.Look

// Whether the visualizer shows, which one, its colours and its fine tuning.
ColumnLayout {
    spacing: 4
    readonly property var shapeControls: settings.vizControls.filter(c => c.section === "adjustments")
    readonly property var movementControls: settings.vizControls.filter(c => c.section === "response")

    SettingsSection {
        settingsAnchor: "visible"
        SettingsToggle {
            label: "Show visualizer"
            detail: "Turn off for a compact player with artwork, track details and playback controls."
            checked: Theme.showVisualizer
            onToggled: on => Theme.showVisualizer = on
        }
    }

    SettingsSection {
        visible: !Theme.showVisualizer
        title: "Artwork takes centre stage"
        Label {
            Layout.fillWidth: true
            text: "Your visualizer preferences are kept for when you turn it back on."
            wrapMode: Text.WordWrap
            color: SettingsStyle.secondaryText
        }
    }

    SettingsSection {
        visible: Theme.showVisualizer
        title: "Style"
        settingsAnchor: "style"
        ChoiceGrid {
            objectName: "vizStyle"
            choices: settings.vizStyles
            current: Theme.vizID
            onChosen: id => Theme.vizID = id
        }
    }

    SettingsSection {
        visible: Theme.showVisualizer
        title: "Visualizer colour"
        settingsAnchor: "colour"
        Segmented {
            choices: [{ id: "album", title: "Album art" }, { id: "fixed", title: "Fixed colour" }]
            current: Theme.albumColours ? "album" : "fixed"
            onChosen: id => Theme.albumColours = id === "album"
        }
        Label {
            visible: Theme.albumColours
            Layout.fillWidth: true
            wrapMode: Text.WordWrap
            color: SettingsStyle.secondaryText
            text: Theme.paletteColours.length === 0 ? "Play a song to pick up its colours."
                : Theme.isColourlessCover ? "No colour in this cover, so the visualizer is white."
                : Theme.paletteColours.length > 1 ? "From the current cover, low to high notes."
                : "From the current cover."
        }
        SwatchRow {
            visible: !Theme.albumColours
            choices: Theme.skinChoices
            current: Theme.currentID
            onChosen: id => Theme.currentID = id
        }
        RowLayout {
            visible: !Theme.albumColours
            Label { text: "Custom colour"; color: SettingsStyle.textColour; Layout.preferredWidth: 110 }
            Slider {
                Layout.fillWidth: true
                value: Math.max(0, Theme.customColor.hsvHue)
                onMoved: Theme.customColor = Qt.hsva(value, 0.75, 1, 1)
                Accessible.name: "Custom colour"
                background: Rectangle {
                    y: parent.height / 2 - 3
                    width: parent.width; height: 6; radius: 3
                    gradient: Gradient {
                        orientation: Gradient.Horizontal
                        GradientStop { position: 0.0; color: "#ff4040" }
                        GradientStop { position: 0.17; color: "#ffff40" }
                        GradientStop { position: 0.33; color: "#40ff40" }
                        GradientStop { position: 0.5; color: "#40ffff" }
                        GradientStop { position: 0.67; color: "#4040ff" }
                        GradientStop { position: 0.83; color: "#ff40ff" }
                        GradientStop { position: 1.0; color: "#ff4040" }
                    }
                }
            }
        }
    }

    SettingsSection {
        visible: Theme.showVisualizer
        Collapsible {
            title: "Fine-tune visualizer"
            open: settings.fineTuning
            onOpenToggled: o => settings.fineTuning = o
            Label {
                property string settingsAnchor: "adjustments"
                text: "Shape & detail"
                font.weight: Font.DemiBold
                color: SettingsStyle.textColour
            }
            Repeater {
                model: shapeControls
                delegate: TuningSlider { required property var modelData; control: modelData }
            }
            Label {
                property string settingsAnchor: "response"
                text: "Movement"
                font.weight: Font.DemiBold
                color: SettingsStyle.textColour
            }
            Repeater {
                model: movementControls
                delegate: TuningSlider { required property var modelData; control: modelData }
            }
            SettingsButton {
                text: "Reset"
                onClicked: settings.resetTuning(settings.vizControls.map(c => c.key))
            }
        }
    }
}
