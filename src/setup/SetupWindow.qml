import QtQuick
import QtQuick.Layouts
import QtQuick.Window

// The setup window: the step rail at the left, the step's page, and the footer with "Back",
// the step count and the primary button. A first run's window cannot be closed.
Window {
    id: window
    title: "MIRL PRO Setup"
    width: 860
    height: 600
    minimumWidth: 860
    minimumHeight: 600
    maximumWidth: 860
    maximumHeight: 600
    visible: false
    color: SetupStyle.windowColour
    // An ordinary window, so the taskbar finds it; the first run's has no close button.
    flags: closable ? (Qt.Window | Qt.WindowTitleHint | Qt.WindowCloseButtonHint)
                    : (Qt.Window | Qt.CustomizeWindowHint | Qt.WindowTitleHint)

    onClosing: close => close.accepted = closable

    readonly property var pages: ["WelcomeStep.qml", "FindPlayerStep.qml", "MusicStep.qml",
        "VisualizerStep.qml", "LibraryStep.qml", "TipsStep.qml", "QuickAccessStep.qml",
        "DoneStep.qml"]

    Shortcut {
        sequences: ["Return", "Enter"]
        onActivated: setup.next()
    }
    Shortcut {
        sequence: "Escape"
        enabled: closable
        onActivated: window.close()
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0

        StepRail {
            Layout.fillHeight: true
            Layout.preferredWidth: 230
        }

        ColumnLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            spacing: 0

            Loader {
                id: page
                objectName: "stepPage"
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.leftMargin: 44
                Layout.rightMargin: 44
                Layout.topMargin: 44
                source: window.pages[setup.step]
                onLoaded: fade.restart()
                NumberAnimation {
                    id: fade
                    target: page.item
                    property: "opacity"
                    from: 0
                    to: 1
                    duration: 180
                    easing.type: Easing.OutCubic
                }
            }

            Rectangle {
                Layout.fillWidth: true
                Layout.preferredHeight: 1
                color: SetupStyle.separatorColour
            }

            RowLayout {
                Layout.fillWidth: true
                Layout.preferredHeight: 68
                Layout.leftMargin: 44
                Layout.rightMargin: 28
                spacing: 12

                SetupButton {
                    objectName: "back"
                    visible: setup.step > 0
                    text: "Back"
                    onClicked: setup.back()
                }
                Item { Layout.fillWidth: true }
                Text {
                    text: "Step " + (setup.step + 1) + " of " + setup.stepCount
                    color: SetupStyle.tertiaryText
                    font.pixelSize: SetupStyle.smallSize + 1
                }
                SetupButton {
                    objectName: "primary"
                    text: setup.primaryText
                    primary: true
                    onClicked: setup.next()
                }
            }
        }
    }
}
