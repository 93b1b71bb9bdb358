import QtQuick

// One text block for an empty or failed list: a title, an optional detail, and up to two actions.
Column {
    id: state
    property string title
    property string detail
    property string action
    property string secondAction
    signal actionClicked
    signal secondActionClicked

    spacing: 8
    Text {
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(implicitWidth, 320)
        text: state.title
        color: "white"
        font.pixelSize: 15
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
    }
    Text {
        anchors.horizontalCenter: parent.horizontalCenter
        width: 300
        visible: state.detail !== ""
        text: state.detail
        color: Qt.rgba(1, 1, 1, 0.6)
        font.pixelSize: 12
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
    }
    Row {
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 8
        topPadding: 4
        LibraryButton {
            visible: state.action !== ""
            text: state.action
            prominent: true
            onClicked: state.actionClicked()
        }
        LibraryButton {
            visible: state.secondAction !== ""
            text: state.secondAction
            onClicked: state.secondActionClicked()
        }
    }
}
