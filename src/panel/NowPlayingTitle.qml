import QtQuick
import MirlPlayer.Surface

// The title, and below it the artists and the album: each credited artist of a Spotify track is
// its own link into the library, and so is a known album; otherwise plain text.
Column {
    id: block
    required property var player
    required property var panel
    required property var theme
    property bool large: false
    spacing: large ? 4 : 2
    clip: true

    readonly property color ink: theme.inkColor
    readonly property bool linked: player.sourceName === "Spotify"
                                   && credits.track === player.trackURI
    readonly property bool artistLinks: linked && credits.artists.length > 0
    readonly property bool albumLink: linked && credits.album.name !== undefined

    NowPlayingArtists {
        id: credits
        trackURI: block.player.trackURI
    }

    Text {
        objectName: "title"
        width: parent.width
        text: block.player.title
        color: block.ink
        font.pixelSize: block.large ? 17 : 14
        font.weight: block.large ? Font.Bold : Font.DemiBold
        horizontalAlignment: block.large ? Text.AlignHCenter : Text.AlignLeft
        elide: Text.ElideRight
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    Row {
        objectName: "artistLine"
        width: parent.width
        spacing: 0
        readonly property real fontSize: block.large ? 13 : 12
        readonly property int fontWeight: block.large ? Font.Medium : Font.Normal
        anchors.horizontalCenter: block.large ? parent.horizontalCenter : undefined
        Text {
            visible: !block.artistLinks
            width: Math.min(implicitWidth, block.width)
            text: block.player.artist
            color: block.ink
            opacity: 0.7
            font.pixelSize: parent.fontSize
            font.weight: parent.fontWeight
            elide: Text.ElideRight
        }
        Repeater {
            model: block.artistLinks ? credits.artists : []
            LinkText {
                required property var modelData
                required property int index
                text: modelData.name + (index < credits.artists.length - 1 ? ", " : "")
                fontSize: parent.fontSize
                ink: block.ink
                help: modelData.name
                onActivated: block.panel.openItem(modelData)
            }
        }
        LinkText {
            visible: block.albumLink
            text: " · " + (credits.album.name || "")
            fontSize: parent.fontSize
            ink: block.ink
            help: "Open album: " + (credits.album.name || "")
            onActivated: block.panel.openItem(credits.album)
        }
    }

    component LinkText: Text {
        id: link
        property real fontSize: 12
        property color ink: "white"
        property string help: ""
        signal activated
        color: ink
        opacity: area.containsMouse ? 1 : 0.85
        font.pixelSize: fontSize
        font.underline: area.containsMouse
        Accessible.role: Accessible.Link
        Accessible.name: help
        Accessible.onPressAction: link.activated()
        MouseArea {
            id: area
            anchors.fill: parent
            hoverEnabled: true
            cursorShape: Qt.PointingHandCursor
            onClicked: link.activated()
        }
    }
}
