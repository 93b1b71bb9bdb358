// The library in the panel on a private X server, against the fake Web API: opened from the card,
// clicked, liked, its pins dragged, its place kept.
#include "X11TestMain.h"
#include "core/Preferences.h"
#include "library/LibraryModule.h"
#include "library/LibraryScroll.h"
#include "library/LibraryViewModel.h"
#include "library/SpotifyBrowser.h"
#include "library/SpotifyMemory.h"
#include "panel/host/NotchPanelHost.h"
#include "playback/PlayerState.h"
#include "spotify/FakeSpotifyServer.h"
#include "spotify/SpotifyError.h"
#include "spotify/SpotifyLibrary.h"
#include "spotify/SpotifyTokenStore.h"

#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

using namespace MirlPlayer;

namespace {

const QString kClient = QStringLiteral("0123456789abcdef0123456789abcdef");
constexpr int kSongs = 80;

void xdo(const QStringList& args) {
    QProcess::execute(QStringLiteral("xdotool"), args);
}
void pointerTo(QPointF at) {
    xdo({QStringLiteral("mousemove"), QString::number(int(at.x())), QString::number(int(at.y()))});
}

QString songID(int i) {
    return QStringLiteral("%1").arg(i, 22, 10, QChar(u'0'));
}

// One page holding every liked song.
QByteArray likedSongs() {
    QStringList items;
    for (int i = 0; i < kSongs; ++i)
        items << QStringLiteral(
                     R"({"added_at":"2026-10-02T18:22:41Z","track":{"id":"%1","name":"Song %2",)"
                     R"("type":"track","uri":"spotify:track:%1","duration_ms":200000,)"
                     R"("album":{"id":"%3","name":"Album","type":"album","uri":"spotify:album:%3",)"
                     R"("images":[]},"artists":[{"id":"%4","name":"Artist","type":"artist"}]}})")
                     .arg(songID(i))
                     .arg(i)
                     .arg(songID(900), songID(901));
    return QStringLiteral(R"({"items":[%1],"total":%2,"next":null,"limit":50,"offset":0})")
        .arg(items.join(u','))
        .arg(kSongs)
        .toUtf8();
}

} // namespace

class tst_LibraryView : public QObject {
    Q_OBJECT
    FakeSpotifyServer m_server;
    std::unique_ptr<PlayerState> m_player;
    std::unique_ptr<NotchPanelHost> m_host;
    QList<QString> m_plays;

    // By object name through the visual tree: a list's rows have no object parent.
    static QQuickItem* findIn(QQuickItem* item, const QString& name) {
        if (item->objectName() == name)
            return item;
        for (QQuickItem* child : item->childItems())
            if (QQuickItem* found = findIn(child, name))
                return found;
        return nullptr;
    }
    QQuickItem* find(const QString& name) { return findIn(m_host->window()->rootObject(), name); }
    QPointF centre(QQuickItem* item) {
        return item->mapToGlobal(QPointF(item->width() / 2, item->height() / 2));
    }
    void click(QQuickItem* item) {
        pointerTo(centre(item));
        QTest::qWait(80);
        xdo({QStringLiteral("click"), QStringLiteral("1")});
    }
    QQuickItem* list() { return find(QStringLiteral("libraryList")); }
    int firstRow() {
        QQuickItem* l = list();
        int row = -1;
        QMetaObject::invokeMethod(l, "indexAt", Q_RETURN_ARG(int, row), Q_ARG(qreal, 10),
                                  Q_ARG(qreal, l->property("contentY").toReal() + 1));
        return row;
    }
    QQuickItem* row(int index) {
        QQuickItem* l = list();
        QQuickItem* item = nullptr;
        QMetaObject::invokeMethod(l, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item),
                                  Q_ARG(int, index));
        return item;
    }
    LibraryViewModel* rules() {
        auto* view = find(QStringLiteral("spotifyLibraryView"));
        return view ? view->findChild<LibraryViewModel*>(QStringLiteral("libraryRules")) : nullptr;
    }
    void openLibrary(bool open) {
        m_host->requestLibrary(open);
        QTRY_VERIFY(open == (find(QStringLiteral("spotifyLibraryView")) != nullptr));
        if (open)
            QTRY_VERIFY(rules() && rules()->connected());
        if (auto* r = rules())
            r->play = [this](SpotifyPlaybackSelection selection) -> QCoro::Task<void> {
                m_plays << selection.trackURI;
                co_return;
            };
        QTest::qWait(1200); // the shape's spring and the fade: the input region settles
    }

private Q_SLOTS:
    void initTestCase() {
        m_server.routeFixture(QStringLiteral("GET /v1/me"), QStringLiteral("me.json"));
        m_server.routeJSON(QStringLiteral("GET /v1/me/tracks"), likedSongs());
        m_server.routeJSON(QStringLiteral("GET /v1/me/playlists"),
                           FakeSpotifyServer::fixture(QStringLiteral("playlists.json")));
        m_server.routeJSON(QStringLiteral("PUT /v1/me/library"), "{}");
        m_server.routeJSON(QStringLiteral("DELETE /v1/me/library"), "{}");
        // A fresh library memory: the test folder outlives a run.
        QFile::remove(SpotifyMemory::defaultFilePath());
        qputenv("MIRL_SPOTIFY_SERVICE", m_server.base().toString().toUtf8());
        Preferences::shared().setValue(QStringLiteral("spotifyClientID"), kClient);
        QVERIFY(SpotifyTokenStore::store(kClient, QStringLiteral("refresh-0")));

        m_player = std::make_unique<PlayerState>(nullptr);
        NotchPanelController::Outputs out;
        out.broadcast = [](const MirlState&) {};
        pointerTo(QPointF(100, 900));
        m_host = std::make_unique<NotchPanelHost>(*m_player, NotchPanelController::Inputs{}, out);
        m_host->setEngineSetup([](QQmlEngine& engine) { useLibraryModule(engine); });
        m_host->setLibraryView(libraryViewSource());
        QVERIFY(m_host->show());
    }

    void theCardsArtOpensTheLibraryOnLikedSongs() {
        pointerTo(QPointF(756, 52));
        QTRY_VERIFY_WITH_TIMEOUT(m_host->expanded(), 3000);
        QTest::qWait(500);
        QQuickItem* art = find(QStringLiteral("artSlot"));
        QVERIFY(art);
        click(art);
        QTRY_VERIFY(m_host->libraryOpen());
        openLibrary(true);
        QQuickItem* liked = find(QStringLiteral("pin:Liked Songs"));
        QVERIFY(liked);
        click(liked);
        QTRY_COMPARE(SpotifyBrowser::shared().tab(), QStringLiteral("Liked Songs"));
        QTRY_COMPARE(SpotifyBrowser::shared().list()->count(), kSongs);
    }

    void aSingleClickPlaysTheSongOnce() {
        m_plays.clear();
        QTRY_VERIFY(row(2));
        QTest::qWait(400); // the filter field slides in above the rows
        click(row(2));
        QTRY_COMPARE(m_plays, QList<QString>{"spotify:track:" + songID(2)});
        QTest::qWait(400);
        QCOMPARE(m_plays.size(), 1);
    }

    void aDoubleClickLikesTheSongAndPlaysNothing() {
        SpotifyBrowser& browser = SpotifyBrowser::shared();
        QVERIFY(browser.list()->count() > 3 && row(3));
        const SpotifyItem song = browser.list()->at(3);
        browser.setLiked(song, false);
        QTRY_VERIFY(!browser.isLiked(song));
        m_plays.clear();
        pointerTo(centre(row(3)));
        QTest::qWait(80);
        xdo({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"),
             QStringLiteral("--delay"), QStringLiteral("60"), QStringLiteral("1")});
        QTRY_VERIFY(browser.isLiked(song));
        QTest::qWait(500);
        QCOMPARE(m_plays, QList<QString>());
    }

    // The field is left by its keys; once it has given the keyboard back, Esc closes the library.
    void theFilterFieldGivesTheKeyboardBack_data() {
        QTest::addColumn<QStringList>("keys");
        QTest::newRow("Return") << QStringList{QStringLiteral("Return")};
        QTest::newRow("Esc clears, then leaves")
            << QStringList{QStringLiteral("x"), QStringLiteral("Escape"), QStringLiteral("Escape")};
    }
    void theFilterFieldGivesTheKeyboardBack() {
        QFETCH(QStringList, keys);
        QQuickItem* field = find(QStringLiteral("filterField"));
        QVERIFY(field && field->isVisible());
        click(field);
        QTRY_VERIFY(m_host->window()->isActive());
        xdo(QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("100")} +
            keys);
        QTRY_VERIFY(!m_host->window()->isActive());
        QVERIFY(m_host->libraryOpen());
        QCOMPARE(SpotifyBrowser::shared().filter(), QString());
        xdo({QStringLiteral("key"), QStringLiteral("Escape")});
        QTRY_VERIFY(!m_host->libraryOpen());
        openLibrary(true);
    }

    void anIncompleteSetupOffersToFinishIt() {
        QStringList opened;
        LibraryViewModel::openSettings = [&](const QString& page) { opened << page; };
        rules()->play = [](SpotifyPlaybackSelection) -> QCoro::Task<void> {
            throw SpotifyFailure(PlayerState::setupMessage);
            co_return;
        };
        click(row(1));
        QTRY_COMPARE(rules()->bannerAction(), QStringLiteral("Finish setup"));
        QTest::qWait(300); // the banner is laid out
        QQuickItem* banner = find(QStringLiteral("banner"));
        QVERIFY(banner && banner->isVisible());
        click(banner->childItems().constFirst()->childItems().constLast());
        QTRY_COMPARE(opened, QStringList{QStringLiteral("Spotify")});
        QCOMPARE(rules()->banner(), QString());
        LibraryViewModel::openSettings = {};
    }

    void aPinDraggedOutOfTheSidebarIsRemoved() {
        SpotifyBrowser& browser = SpotifyBrowser::shared();
        browser.selectTab(QStringLiteral("Playlists"));
        QTRY_VERIFY(browser.list()->count() > 0);
        const QString name = browser.list()->at(0).name;
        browser.pinRow(0);
        QQuickItem* pin = nullptr;
        QTRY_VERIFY((pin = find(QStringLiteral("pin:") + name)));
        QTest::qWait(200);
        const QPointF from = centre(pin);
        pointerTo(from);
        xdo({QStringLiteral("mousedown"), QStringLiteral("1")});
        for (int dx : {6, 60, 160, 240}) {
            pointerTo(from + QPointF(dx, 10));
            QTest::qWait(40);
        }
        QTRY_VERIFY(rules()->dropRemoves());
        xdo({QStringLiteral("mouseup"), QStringLiteral("1")});
        QTRY_VERIFY(std::none_of(browser.shortcuts().cbegin(), browser.shortcuts().cend(),
                                 [&](const LibraryShortcut& s) { return s.name == name; }));
    }

    void theListKeepsItsPlaceAcrossClosingAndARestart() {
        SpotifyBrowser& browser = SpotifyBrowser::shared();
        browser.selectTab(QStringLiteral("Liked Songs"));
        QTRY_COMPARE(browser.list()->count(), kSongs);
        QTest::qWait(200);
        QMetaObject::invokeMethod(list(), "positionViewAtIndex", Q_ARG(int, 40),
                                  Q_ARG(int, 0)); // at the top
        QTRY_COMPARE(firstRow(), 40);
        openLibrary(false);
        openLibrary(true);
        QTRY_COMPARE(firstRow(), 40);

        // A restart: a new memory read from the file, and a new browser over it.
        SpotifyMemory::shared().flush();
        SpotifyMemory memory(SpotifyMemory::defaultFilePath(),
                             SpotifyMemory::ownerFrom(SpotifyLibrary::shared()),
                             SpotifyMemory::pagesFrom(SpotifyLibrary::shared()), Clock::system());
        memory.waitUntilRead();
        SpotifyBrowser again(SpotifyLibrary::shared(), memory, Preferences::shared(),
                             Clock::system());
        LibraryScroll scroll(again);
        scroll.setProperty("remember", true);
        scroll.setProperty("model", QVariant::fromValue(again.list()));
        again.appear();
        QTRY_COMPARE(again.tab(), QStringLiteral("Liked Songs"));
        QTRY_COMPARE(again.list()->count(), kSongs);
        QCOMPARE(scroll.rowToRestore(), 40);
        QTest::qWait(300); // the browser's requests land before it goes
    }
};

MIRL_X11_TEST_MAIN(tst_LibraryView)

#include "tst_LibraryView.moc"
