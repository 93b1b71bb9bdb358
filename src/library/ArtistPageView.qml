import QtQuick
import MirlPlayer.Library

// An artist's page: the picture and name with a green Play, the artist's songs among the user's
// Liked Songs, the popular tracks (each cut short until "Show all"), and the releases.
Flickable {
    id: page
    required property var browser
    required property var view
    required property var queue
    required property var player
    property var route: null
    property bool active: false
    property color green: "#1ed760"
    property bool showAllLiked: false
    property bool showAllPopular: false

    contentHeight: column.height + 16
    clip: true
    boundsBehavior: Flickable.StopAtBounds

    ArtistPageModel { id: artist }
    function refresh() {
        if (!active || !route)
            return
        showAllLiked = false
        showAllPopular = false
        contentY = 0
        artist.loadArtist(route.uri, route.title)
        artist.openLikedSection()
    }
    onActiveChanged: refresh()
    onRouteChanged: refresh()

    Column {
        id: column
        x: 16
        width: page.width - 32
        spacing: 10
        Row {
            spacing: 14
            CoverImage {
                width: 72
                height: 72
                corner: 36
                url: artist.artist.largeImage ? artist.artist.largeImage : (artist.artist.image ? artist.artist.image : "")
                symbol: "☺"
                symbolSize: 24
            }
            Column {
                anchors.verticalCenter: parent.verticalCenter
                spacing: 8
                Text {
                    text: artist.artist.name ? artist.artist.name : (page.route ? page.route.title : "")
                    color: "white"
                    font.pixelSize: 22
                    font.weight: Font.Bold
                }
                LibraryButton {
                    text: "▶  Play"
                    prominent: true
                    visible: artist.popular.count > 0
                    onClicked: page.view.rowClicked(artist.popular, 0)
                }
            }
        }
        Text {
            visible: artist.error !== ""
            text: artist.error
            color: "orange"
            font.pixelSize: 12
        }
        Section {
            title: "Liked songs"
            model: artist.likedTracks
            context: "liked"
            showAll: page.showAllLiked
            onMore: page.showAllLiked = true
        }
        Section {
            title: "Popular"
            model: artist.popular
            showAll: page.showAllPopular
            onMore: page.showAllPopular = true
        }
        Text {
            visible: artist.releases.count > 0
            text: "Releases"
            color: "white"
            font.pixelSize: 14
            font.weight: Font.DemiBold
        }
        Flow {
            width: column.width
            spacing: 12
            Repeater {
                model: artist.releases
                delegate: Item {
                    required property int index
                    required property var image
                    required property string name
                    required property string subtitle
                    width: 96
                    height: 132
                    CoverImage { width: 96; height: 96; corner: 8; url: parent.image ? parent.image : ""; symbolSize: 22 }
                    Text { y: 100; width: 96; text: parent.name; color: "white"; font.pixelSize: 11; elide: Text.ElideRight }
                    Text { y: 115; width: 96; text: parent.subtitle; color: Qt.rgba(1, 1, 1, 0.55); font.pixelSize: 10; elide: Text.ElideRight }
                    MouseArea {
                        anchors.fill: parent
                        cursorShape: Qt.PointingHandCursor
                        onClicked: page.view.openRow(artist.releases, parent.index)
                    }
                }
            }
        }
    }

    component Section: Column {
        id: section
        property string title
        property var model
        property string context
        property bool showAll: false
        signal more
        visible: model.count > 0
        width: column.width
        Text {
            text: section.title
            color: "white"
            font.pixelSize: 14
            font.weight: Font.DemiBold
            bottomPadding: 4
        }
        Repeater {
            model: section.model
            delegate: SpotifyLibraryRow {
                width: section.width + 32
                x: -16
                visible: section.showAll || index < 5
                height: visible ? 40 : 0
                numbered: true
                model: section.model
                view: page.view
                queue: page.queue
                player: page.player
                green: page.green
                context: section.context
                onOpenAlbum: page.view.openAlbumOf(section.model, index)
                onOpenArtist: which => page.view.openArtistOf(section.model, index, which)
            }
        }
        LibraryButton {
            visible: !section.showAll && section.model.count > 5
            text: "Show all"
            onClicked: section.more()
        }
    }
}
