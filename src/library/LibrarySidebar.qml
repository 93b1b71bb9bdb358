import QtQuick
import QtQuick.Controls

// The sidebar: search, then "YOUR MUSIC" over the built-in lists and the pins. A pin is dragged to
// reorder (a line shows where it lands) and out of the sidebar to remove it; the built-ins stay.
Item {
    id: sidebar
    required property var browser
    required property var view      // LibraryViewModel
    required property Item space    // the coordinate space of the drag
    property color green: "#1ed760"

    function frameOf(item) {
        const p = item.mapToItem(sidebar.space, 0, 0)
        return Qt.rect(p.x, p.y, item.width, item.height)
    }
    onWidthChanged: view.setSidebarFrame(frameOf(sidebar))
    onHeightChanged: view.setSidebarFrame(frameOf(sidebar))
    Component.onCompleted: view.setSidebarFrame(frameOf(sidebar))

    Column {
        id: top
        width: parent.width
        spacing: 2
        SidebarRow {
            title: "Search"
            symbol: "⌕"
            selected: sidebar.browser.tab === "Search"
            onChosen: sidebar.browser.selectTab("Search")
        }
        Text {
            leftPadding: 12
            topPadding: 10
            bottomPadding: 4
            text: "YOUR MUSIC"
            color: Qt.rgba(1, 1, 1, 0.45)
            font.pixelSize: 10
            font.weight: Font.DemiBold
            font.letterSpacing: 0.8
            HoverHandler { id: helpHover }
            ToolTip.visible: helpHover.hovered
            ToolTip.delay: 500
            ToolTip.text: "Your music · drag to reorder, drag out to remove"
        }
    }

    ListView {
        id: pins
        objectName: "pins"
        anchors.top: top.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        clip: true
        spacing: 2
        interactive: sidebar.view.dragged === ""
        boundsBehavior: Flickable.StopAtBounds
        model: sidebar.browser.shortcuts
        delegate: SidebarRow {
            id: pin
            required property var modelData
            readonly property bool builtin: modelData.kind === "builtin"
            objectName: "pin:" + modelData.name
            title: modelData.name
            image: modelData.image
            symbol: modelData.name === "Liked Songs" ? "♥" : (builtin ? "≡" : "♪")
            selected: sidebar.browser.tab === modelData.name
            lifted: sidebar.view.dragged === modelData.id
            onChosen: sidebar.browser.selectTab(modelData.name)
            onYChanged: sidebar.view.setRowFrame(modelData.id, sidebar.frameOf(pin))
            Component.onCompleted: sidebar.view.setRowFrame(modelData.id, sidebar.frameOf(pin))
            draggable: !builtin
            onDragged: at => sidebar.view.dragMoved(modelData.id, pin.mapToItem(sidebar.space, at.x, at.y))
            onDropped: at => sidebar.view.dragReleased(pin.mapToItem(sidebar.space, at.x, at.y))
            // The drop line: above the pin the dragged one would land before.
            Rectangle {
                visible: sidebar.view.dropTarget === pin.modelData.id
                y: -2
                x: 10
                width: pin.width - 20
                height: 2
                radius: 1
                color: sidebar.green
            }
        }
        footer: Item {
            width: pins.width
            height: 8
            Rectangle {
                visible: sidebar.view.dragged !== "" && sidebar.view.dropTarget === "\u0000end"
                x: 10
                width: parent.width - 20
                height: 2
                radius: 1
                color: sidebar.green
            }
        }
        onContentYChanged: {
            for (let i = 0; i < contentItem.children.length; ++i) {
                const row = contentItem.children[i]
                if (row.modelData)
                    sidebar.view.setRowFrame(row.modelData.id, sidebar.frameOf(row))
            }
        }
    }

    component SidebarRow: Item {
        id: entry
        property string title
        property string symbol
        property var image
        property bool selected
        property bool lifted
        property bool draggable: false
        signal chosen
        signal dragged(point at)
        signal dropped(point at)
        width: sidebar.width
        height: 32
        scale: lifted || (draggable && hover.containsMouse && sidebar.view.dragged === "") ? 1.04 : 1
        opacity: lifted ? 0.35 : 1
        Behavior on scale { NumberAnimation { duration: 150; easing.type: Easing.OutQuad } }
        Rectangle {
            anchors.fill: parent
            anchors.leftMargin: 6
            anchors.rightMargin: 6
            radius: 8
            color: Qt.rgba(1, 1, 1, entry.selected ? 0.14 : (hover.containsMouse ? 0.07 : 0))
        }
        CoverImage {
            id: icon
            x: 14
            anchors.verticalCenter: parent.verticalCenter
            width: 20
            height: 20
            url: entry.image ? entry.image : ""
            symbol: entry.symbol
            symbolSize: entry.symbol === "⌕" ? 15 : 11
        }
        SidebarScrollingName {
            anchors.left: icon.right
            anchors.leftMargin: 8
            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            text: entry.title
            active: hover.containsMouse
            selected: entry.selected
            color: entry.selected ? "white" : Qt.rgba(1, 1, 1, 0.8)
            weight: entry.selected ? Font.DemiBold : Font.Normal
        }
        MouseArea {
            id: hover
            anchors.fill: parent
            hoverEnabled: true
            property point pressedAt
            property bool dragging: false
            preventStealing: dragging
            onPressed: mouse => { pressedAt = Qt.point(mouse.x, mouse.y); dragging = false }
            onPositionChanged: mouse => {
                if (!pressed || !entry.draggable)
                    return
                if (!dragging && Math.hypot(mouse.x - pressedAt.x, mouse.y - pressedAt.y) < 4)
                    return
                dragging = true
                entry.dragged(Qt.point(mouse.x, mouse.y))
            }
            onReleased: mouse => {
                // `dragging` stays set until the next press, so the release is no click.
                if (dragging)
                    entry.dropped(Qt.point(mouse.x, mouse.y))
            }
            onClicked: if (!dragging) entry.chosen()
        }
        Accessible.role: Accessible.Button
        Accessible.name: entry.title
    }
}
