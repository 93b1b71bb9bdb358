import QtQuick
import QtQuick.Controls.Fusion
import QtQuick.Layouts

// One slider of the tuning store: it writes into VizConfig as it moves, so the panel follows.
ColumnLayout {
    id: tuning
    required property var control
    Layout.fillWidth: true
    spacing: 0

    RowLayout {
        Layout.fillWidth: true
        Label { text: tuning.control.label; color: SettingsStyle.textColour; Layout.preferredWidth: 150 }
        Slider {
            id: slider
            Layout.fillWidth: true
            from: tuning.control.min
            to: tuning.control.max
            value: viz.values[tuning.control.key] !== undefined ? viz.values[tuning.control.key]
                                                                : viz.value(tuning.control.key)
            onMoved: settings.setTuning(tuning.control.key, value, pressed)
            onPressedChanged: settings.setTuning(tuning.control.key, value, pressed)
            Accessible.name: tuning.control.label
        }
        Label {
            Layout.preferredWidth: 52
            horizontalAlignment: Text.AlignRight
            text: settings.formatValue(tuning.control.key, slider.value)
            color: SettingsStyle.secondaryText
        }
    }
    Label {
        Layout.fillWidth: true
        text: tuning.control.help
        wrapMode: Text.WordWrap
        color: SettingsStyle.secondaryText
        font.pixelSize: 11
    }
}
