import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts
import MirlPlayer.Look

// The reflection sliders for the light shown now (glass or edge), in the library or not, with
// "Reset".
ColumnLayout {
    id: list
    property bool library
    readonly property var controls: Theme.showVisualizer, settings.reflectionControls(library)
    Layout.fillWidth: true

    Repeater {
        model: list.controls
        delegate: TuningSlider { required property var modelData; control: modelData }
    }
    SettingsButton {
        text: "Reset"
        onClicked: settings.resetTuning(list.controls.map(c => c.key))
    }
}
