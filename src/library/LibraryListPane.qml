import QtQuick
import MirlPlayer.Library

// The list pane: the header, then the list the browser shows (or the artist page, or the
// queue), with its pull to refresh, the remembered place, the rows fading under the header, and
// the empty, loading and failure states.
Item {
    id: pane
    required property var browser
    required property var view
    required property var queue
    required property var player
    property color green: "#1ed760"
    readonly property alias header: header
    readonly property var route: browser.routes.length > 0 ? browser.routes[browser.routes.length - 1] : null
    readonly property bool artistPage: !view.showingQueue && route !== null && route.kind === "artist"
    readonly property bool searchHome: browser.isSearchHome
    readonly property bool searching: browser.tab === "Search" && browser.routes.length === 0
    readonly property var shownModel: browser.list

    LibraryListHeader {
        id: header
        x: 16
        y: 8
        z: 2
        width: pane.width - 32
        browser: pane.browser
        view: pane.view
        queue: pane.queue
        player: pane.player
        filterHidden: scroll.filterHidden
    }

    LibraryScroll {
        id: scroll
        target: list
        model: pane.browser.list
        remember: !pane.searchHome
        canHide: list.count > 0
        distance: 60
        onRefreshRequested: pane.browser.pullRefresh()
        onRestoreTo: row => list.positionViewAtIndex(row, ListView.Beginning)
    }

    ListView {
        id: list
        objectName: "libraryList"
        anchors.top: header.bottom
        anchors.topMargin: 6
        anchors.bottom: parent.bottom
        width: parent.width
        visible: !pane.view.showingQueue && !pane.artistPage
        clip: true
        model: pane.shownModel
        reuseItems: true
        cacheBuffer: 120
        boundsBehavior: Flickable.StopAtBounds
        maximumFlickVelocity: 5000
        bottomMargin: 8
        // The pull moves the rows down; they settle back when it ends.
        transform: Translate {
            y: scroll.pullOffset
            Behavior on y { enabled: scroll.pullOffset === 0; NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        }
        onContentYChanged: {
            scroll.offsetChanged(contentY - originY)
            scroll.firstRowChanged(indexAt(0, contentY + 1))
        }
        onAtYEndChanged: if (atYEnd && pane.browser.hasNext && !pane.browser.loading) pane.browser.loadMore()
        header: Item {
            width: list.width
            height: pane.searchHome && list.count > 0 ? 28 : 0
            visible: height > 0
            Text {
                x: 16
                anchors.verticalCenter: parent.verticalCenter
                text: "Recent searches"
                color: Qt.rgba(1, 1, 1, 0.6)
                font.pixelSize: 11
                font.weight: Font.DemiBold
            }
            LibraryButton {
                anchors.right: parent.right
                anchors.rightMargin: 16
                anchors.verticalCenter: parent.verticalCenter
                height: 20
                text: "Clear"
                fontSize: 11
                help: "Clear search history"
                onClicked: pane.browser.clearRecents()
            }
        }
        delegate: SpotifyLibraryRow {
            id: row
            width: list.width
            model: pane.shownModel
            view: pane.view
            queue: pane.queue
            player: pane.player
            green: pane.green
            numbered: pane.route !== null && pane.route.kind === "album"
            removable: pane.searchHome
            // Rows fade softly as they pass under the header.
            readonly property real rowTop: y - list.contentY
            opacity: Math.max(0, Math.min(1, (rowTop + 22) / 30))
            onOpened: pane.browser.openRow(index)
            onRemoved: pane.browser.removeRecentRow(index)
            onOpenAlbum: pane.view.openAlbumOf(model, index)
            onOpenArtist: which => pane.view.openArtistOf(model, index, which)
        }
    }

    PullRing {
        anchors.horizontalCenter: list.horizontalCenter
        y: list.y + Math.max(4, scroll.pullOffset / 2 - 8)
        progress: pane.browser.refreshing ? 1 : scroll.pull
        RotationAnimator on rotation {
            running: pane.browser.refreshing
            from: 0; to: 360; duration: 900; loops: Animation.Infinite
        }
    }

    ArtistPageView {
        anchors.fill: list
        visible: pane.artistPage
        active: pane.artistPage
        route: pane.route
        browser: pane.browser
        view: pane.view
        queue: pane.queue
        player: pane.player
        green: pane.green
    }

    SpotifyQueueView {
        anchors.fill: list
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        visible: pane.view.showingQueue
        queue: pane.queue
        player: pane.player
        onClose: pane.view.showingQueue = false
    }

    // The states of a list with nothing to show.
    LibraryState {
        anchors.centerIn: list
        visible: list.visible && list.count === 0 && title !== ""
        readonly property string query: pane.searching ? pane.browser.query.trim() : pane.browser.filter.trim()
        title: pane.browser.error !== "" ? "Couldn't load music"
             : pane.browser.loading ? (pane.searching || query !== "" ? pane.browser.searchProgress : "Loading…")
             : pane.searchHome ? "Find your next listen"
             : query !== "" ? "Nothing called “" + query + "” here."
             : "No music found"
        detail: pane.browser.error !== "" || pane.browser.loading || query !== "" ? ""
              : pane.searchHome ? "Search Spotify by song, artist or album."
              : "Try another search or add music in Spotify."
        action: pane.browser.error !== "" ? "Try again" : ""
        secondAction: pane.browser.error !== "" ? "Open in Spotify" : ""
        onActionClicked: pane.browser.retry()
        onSecondActionClicked: pane.player.openSpotify("")
    }
}
