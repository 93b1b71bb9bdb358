#include "FakeMprisPlayer.h"
#include "core/Preferences.h"
#include "platform/linux/mpris/MprisPlayerBridge.h"
#include "platform/linux/mpris/MusicSlot.h"

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace MirlPlayer;
using FakeMprisPlayer = MirlTest::FakeMprisPlayer;

Q_DECLARE_METATYPE(MirlPlayer::Snapshot)

namespace {

const QString spotifyName = QStringLiteral("org.mpris.MediaPlayer2.spotify");

QVariantMap playing(const QVariantMap& metadata, qlonglong positionUs = 0,
                    const QString& status = "Playing") {
    return {{"PlaybackStatus", status}, {"Metadata", metadata}, {"Position", positionUs}};
}

Snapshot filled(Source source, bool isPlaying, QString title, QString artist, QString album,
                double durationMs, double positionMs, std::optional<QString> art = {},
                std::optional<QString> uri = {}) {
    Snapshot s = Snapshot::empty(source);
    s.playing = isPlaying;
    s.hasTrack = true;
    s.title = title;
    s.artist = artist;
    s.album = album;
    s.durationMs = durationMs;
    s.positionMs = positionMs;
    s.artURL = art;
    s.trackURI = uri;
    return s;
}

} // namespace

class tst_MprisPlayerBridge : public QObject {
    Q_OBJECT

    std::unique_ptr<MirlTest::PrivateBus> m_bus;
    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_prefs;
    int m_connections = 0;

    std::unique_ptr<MprisPlayerBridge> makeBridge(int timeoutMs = 5000) {
        MprisPlayerBridge::Options options;
        options.callTimeoutMs = timeoutMs;
        auto bus = m_bus->connect(QStringLiteral("bridge%1").arg(++m_connections));
        return std::make_unique<MprisPlayerBridge>(*m_prefs, bus, options);
    }

private Q_SLOTS:
    void initTestCase() {
        m_bus = std::make_unique<MirlTest::PrivateBus>();
        QVERIFY2(!m_bus->address().isEmpty(), "dbus-daemon did not start");
    }
    void init() {
        m_prefs = std::make_unique<Preferences>(
            m_dir.filePath(QStringLiteral("p%1.conf").arg(m_connections)));
    }
    void cleanupTestCase() { m_bus.reset(); }

    void playerAnswersBecomeSnapshots_data() {
        QTest::addColumn<QVariantMap>("properties");
        QTest::addColumn<Snapshot>("expected");
        const QVariantMap full{
            {"xesam:title", "Song"},
            {"xesam:artist", QStringList{"Ann", "", "Bo"}},
            {"xesam:album", "Record"},
            {"mpris:length", qlonglong(245'000'000)},
            {"mpris:artUrl", "https://i.scdn.co/image/ab"},
            {"mpris:trackid", QVariant::fromValue(QDBusObjectPath("/com/spotify/track/4uLU6hMC"))}};
        QTest::newRow("playing, microseconds to milliseconds, artists joined")
            << playing(full, 12'345'000)
            << filled(Source::spotify, true, "Song", "Ann, Bo", "Record", 245000, 12345,
                      QString("https://i.scdn.co/image/ab"), QString("spotify:track:4uLU6hMC"));
        QVariantMap uriForm = full;
        uriForm["mpris:trackid"] = "spotify:track:7ouMYWpwJ422jRcDASZB7P";
        QTest::newRow("track id already a URI")
            << playing(uriForm, 0, "Paused")
            << filled(Source::spotify, false, "Song", "Ann, Bo", "Record", 245000, 0,
                      QString("https://i.scdn.co/image/ab"),
                      QString("spotify:track:7ouMYWpwJ422jRcDASZB7P"));
        QVariantMap ad = full;
        ad["mpris:trackid"] = QVariant::fromValue(QDBusObjectPath("/com/spotify/ad/123"));
        ad.remove("mpris:artUrl");
        QTest::newRow("an advert has no track URI")
            << playing(ad) << filled(Source::spotify, true, "Song", "Ann, Bo", "Record", 245000, 0);
        QTest::newRow("stopped") << playing(full, 0, "Stopped") << Snapshot::empty(Source::spotify);
        QTest::newRow("paused on no track")
            << playing({{"mpris:trackid", QVariant::fromValue(QDBusObjectPath(
                                              "/org/mpris/MediaPlayer2/TrackList/NoTrack"))}},
                       0, "Paused")
            << Snapshot::empty(Source::spotify);
        QTest::newRow("paused, no title, no track id")
            << playing({{"xesam:artist", "x"}}, 0, "Paused") << Snapshot::empty(Source::spotify);
        QTest::newRow("paused, no title, a real track id")
            << playing({{"mpris:trackid", QVariant::fromValue(QDBusObjectPath("/t/1"))}}, 0,
                       "Paused")
            << filled(Source::spotify, false, "", "", "", 0, 0);
        QTest::newRow("no state") << QVariantMap{{"Metadata", full}}
                                  << Snapshot::empty(Source::spotify);
        QTest::newRow("state of the wrong type")
            << QVariantMap{{"PlaybackStatus", 1}, {"Metadata", full}}
            << Snapshot::empty(Source::spotify);
        QTest::newRow("nothing at all") << QVariantMap{} << Snapshot::empty(Source::spotify);
        QTest::newRow("metadata of the wrong type")
            << QVariantMap{{"PlaybackStatus", "Playing"}, {"Metadata", "oops"}, {"Position", "12"}}
            << filled(Source::spotify, true, "", "", "", 0, 0);
        QTest::newRow("fields of the wrong types")
            << playing({{"xesam:title", 42},
                        {"xesam:artist", "Solo"},
                        {"xesam:album", QStringList{"x"}},
                        {"mpris:length", "245000000"},
                        {"mpris:artUrl", 7},
                        {"mpris:trackid", 9}},
                       -5)
            << filled(Source::spotify, true, "", "Solo", "", 0, 0);
        QTest::newRow("other numeric types")
            << playing({{"mpris:length", qulonglong(2'000'000)}}, 0)
            << filled(Source::spotify, true, "", "", "", 2000, 0);
        QTest::newRow("length as a double") << playing({{"mpris:length", 1.5e6}})
                                            << filled(Source::spotify, true, "", "", "", 1500, 0);
        QTest::newRow("negative length") << playing({{"mpris:length", qlonglong(-1)}})
                                         << filled(Source::spotify, true, "", "", "", 0, 0);
        QTest::newRow("empty strings stay empty")
            << playing({{"xesam:title", ""}, {"xesam:artist", QStringList{}}, {"mpris:artUrl", ""}})
            << filled(Source::spotify, true, "", "", "", 0, 0, QString(""));
        QTest::newRow("control characters become spaces")
            << playing({{"xesam:title", "One\nTwo\tThree\x01"}})
            << filled(Source::spotify, true, "One Two Three ", "", "", 0, 0);
        QTest::newRow("huge title is cut")
            << playing({{"xesam:title", QString(200'000, u'x')}})
            << filled(Source::spotify, true, QString(1024, u'x'), "", "", 0, 0);
    }
    void playerAnswersBecomeSnapshots() {
        QFETCH(QVariantMap, properties);
        QFETCH(Snapshot, expected);
        FakeMprisPlayer player(m_bus->address(), spotifyName);
        player.setPlayerProperties(properties);
        auto bridge = makeBridge();
        QCOMPARE(bridge->fetch(Source::spotify), expected);
    }

    void absentPlayerCostsNoCall() {
        FakeMprisPlayer other(m_bus->address(), "org.mpris.MediaPlayer2.vlc");
        auto bridge = makeBridge();
        const int calls = bridge->callsMade();
        QCOMPARE(bridge->fetch(Source::spotify), Snapshot::empty(Source::spotify));
        bridge->command(Source::spotify, "playpause");
        bridge->seek(Source::spotify, 10);
        QVERIFY(!bridge->pid(Source::spotify));
        QCOMPARE(bridge->callsMade(), calls);
        QCOMPARE(other.messagesReceived(), 0);
    }

    void playersComingAndGoingAreNoticed() {
        int changes = 0;
        auto bridge = makeBridge();
        bridge->setChangeHandler([&] { ++changes; });
        QVERIFY(bridge->serviceFor(Source::spotify).isEmpty());
        auto player = std::make_unique<FakeMprisPlayer>(m_bus->address(), spotifyName);
        player->setPlayerProperties(playing({{"xesam:title", "Here"}}));
        QTRY_COMPARE(bridge->serviceFor(Source::spotify), spotifyName);
        QVERIFY(changes >= 1);
        QCOMPARE(bridge->fetch(Source::spotify).title, QStringLiteral("Here"));
        const int before = changes;
        player->leave();
        QTRY_VERIFY(bridge->serviceFor(Source::spotify).isEmpty());
        QVERIFY(changes > before);
        QCOMPARE(bridge->fetch(Source::spotify), Snapshot::empty(Source::spotify));
    }

    void hungPlayerGivesAnEmptySnapshotWithinTheTimeLimit() {
        FakeMprisPlayer hung(m_bus->address(), spotifyName);
        hung.setPlayerProperties(playing({{"xesam:title", "Never"}}));
        hung.setHanging(true);
        FakeMprisPlayer fine(m_bus->address(), "org.mpris.MediaPlayer2.mpv");
        fine.setPlayerProperties(playing({{"xesam:title", "Fine"}}));
        auto bridge = makeBridge(300);
        QTRY_VERIFY(!bridge->serviceFor(Source::music).isEmpty());
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(bridge->fetch(Source::spotify), Snapshot::empty(Source::spotify));
        QVERIFY(timer.elapsed() < 3000);
        QCOMPARE(bridge->fetch(Source::music).title, QStringLiteral("Fine"));
    }

    void seekNamesTheCurrentTrack_data() {
        QTest::addColumn<QVariantMap>("properties");
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QStringList>("received");
        QTest::newRow("with a track id")
            << playing({{"mpris:trackid", QVariant::fromValue(QDBusObjectPath("/0"))}}) << 20.0
            << QStringList{"SetPosition(/0, 20000000)"};
        QTest::newRow("negative seconds go to the start")
            << playing({{"mpris:trackid", QVariant::fromValue(QDBusObjectPath("/t/1"))}}) << -3.0
            << QStringList{"SetPosition(/t/1, 0)"};
        QTest::newRow("without a track id, relative to the position")
            << playing({{"xesam:title", "x"}}, 5'000'000) << 20.0 << QStringList{"Seek(15000000)"};
        QTest::newRow("without a track id or a position, it stays")
            << QVariantMap{{"PlaybackStatus", "Playing"}, {"Metadata", QVariantMap{}}} << 20.0
            << QStringList{};
        QTest::newRow("track id that is no object path")
            << playing({{"mpris:trackid", "not a path"}}, 25'000'000) << 20.0
            << QStringList{"Seek(-5000000)"};
    }
    void seekNamesTheCurrentTrack() {
        QFETCH(QVariantMap, properties);
        QFETCH(double, seconds);
        QFETCH(QStringList, received);
        FakeMprisPlayer player(m_bus->address(), "org.mpris.MediaPlayer2.mpv");
        player.setPlayerProperties(properties);
        auto bridge = makeBridge();
        bridge->seek(Source::music, seconds);
        QCOMPARE(player.commands(), received);
    }

    void changeSignalsOfTheChosenPlayersAskForASample() {
        FakeMprisPlayer chosen(m_bus->address(), "org.mpris.MediaPlayer2.mpv");
        int changes = 0;
        auto bridge = makeBridge();
        bridge->setChangeHandler([&] { ++changes; });
        FakeMprisPlayer ignored(m_bus->address(), "org.mpris.MediaPlayer2.zzz");
        QTRY_COMPARE(changes, 1); // a player arriving is news too
        changes = 0;

        ignored.emitSignal("org.freedesktop.DBus.Properties", "PropertiesChanged",
                           {"org.mpris.MediaPlayer2.Player",
                            QVariantMap{{"PlaybackStatus", "Paused"}}, QStringList{}});
        chosen.emitSignal(
            "org.freedesktop.DBus.Properties", "PropertiesChanged",
            {"org.mpris.MediaPlayer2", QVariantMap{{"Identity", "x"}}, QStringList{}});
        chosen.emitSignal("org.freedesktop.DBus.Properties", "PropertiesChanged",
                          {"org.mpris.MediaPlayer2.Player",
                           QVariantMap{{"PlaybackStatus", "Paused"}}, QStringList{}});
        QTRY_COMPARE(changes, 1);
        chosen.emitSignal("org.mpris.MediaPlayer2.Player", "Seeked", {qlonglong(1'000'000)});
        QTRY_COMPARE(changes, 2);
        QTest::qWait(50);
        QCOMPARE(changes, 2);
    }

    // Two moments: the players and which of them play, then the part Music.
    void musicSlotRule_data() {
        QTest::addColumn<QStringList>("players1");
        QTest::addColumn<QStringList>("playing1");
        QTest::addColumn<QStringList>("players2");
        QTest::addColumn<QStringList>("playing2");
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("music1");
        QTest::addColumn<QString>("music2");
        const QStringList two{"vlc", "amarok"};
        QTest::newRow("named in the setting, whatever plays")
            << two << QStringList{"amarok"} << two << QStringList{"amarok"} << "VLC"
            << "vlc"
            << "vlc";
        QTest::newRow("named instance")
            << QStringList{"mpv.instance42", "amarok"} << QStringList{}
            << QStringList{"mpv.instance42", "amarok"} << QStringList{"amarok"} << "mpv"
            << "mpv.instance42"
            << "mpv.instance42";
        QTest::newRow("named one absent: the rule")
            << two << QStringList{"vlc"} << two << QStringList{"vlc"} << "gone"
            << "vlc"
            << "vlc";
        QTest::newRow("nothing played: the first that is no browser")
            << QStringList{"chromium.instance7", "firefox.instance_1_2", "vlc"} << QStringList{}
            << QStringList{"chromium.instance7", "firefox.instance_1_2", "vlc"} << QStringList{}
            << ""
            << "vlc"
            << "vlc";
        QTest::newRow("a browser only while nothing else plays")
            << QStringList{"chromium.instance7", "vlc"} << QStringList{"chromium.instance7"}
            << QStringList{"chromium.instance7", "vlc"} << QStringList{"chromium.instance7", "vlc"}
            << ""
            << "chromium.instance7"
            << "vlc";
        QTest::newRow("phone and browser bridges are browsers")
            << QStringList{"kdeconnect.mpris_phone", "plasma-browser-integration", "zz"}
            << QStringList{"kdeconnect.mpris_phone", "plasma-browser-integration"}
            << QStringList{"kdeconnect.mpris_phone", "plasma-browser-integration", "zz"}
            << QStringList{"kdeconnect.mpris_phone", "plasma-browser-integration", "zz"} << ""
            << "kdeconnect.mpris_phone"
            << "zz";
        QTest::newRow("no change mid-song when another starts")
            << two << QStringList{"vlc"} << two << two << ""
            << "vlc"
            << "vlc";
        QTest::newRow("a paused choice yields to one that plays")
            << two << QStringList{"vlc"} << two << QStringList{"amarok"} << ""
            << "vlc"
            << "amarok";
        QTest::newRow("nothing plays: the one that played last")
            << two << QStringList{"vlc"} << two << QStringList{} << ""
            << "vlc"
            << "vlc";
        QTest::newRow("the choice leaves")
            << two << QStringList{"vlc"} << QStringList{"amarok"} << QStringList{} << ""
            << "vlc"
            << "amarok";
        QTest::newRow("the last one leaves")
            << two << QStringList{} << QStringList{} << QStringList{} << ""
            << "amarok"
            << "";
    }
    void musicSlotRule() {
        QFETCH(QStringList, players1);
        QFETCH(QStringList, playing1);
        QFETCH(QStringList, players2);
        QFETCH(QStringList, playing2);
        QFETCH(QString, setting);
        QFETCH(QString, music1);
        QFETCH(QString, music2);
        const auto full = [](const QStringList& names) {
            QStringList out;
            for (const QString& name : names)
                out.append("org.mpris.MediaPlayer2." + name);
            return out;
        };
        const auto set = [&](const QStringList& names) {
            const QStringList list = full(names);
            return QSet<QString>(list.begin(), list.end());
        };
        const auto shortOf = [](const QString& name) { return name.section(u'.', 3); };
        Mpris::MusicSlot slot;
        QVERIFY(slot.update(full(players1), set(playing1), setting).has_value());
        QCOMPARE(shortOf(slot.current()), music1);
        // A change always comes with its reason, and only a change.
        QCOMPARE(slot.update(full(players2), set(playing2), setting).has_value(), music1 != music2);
        QCOMPARE(shortOf(slot.current()), music2);
    }

    // Through the bus: statuses read once on appearing, then followed through the signals.
    void musicFollowsThePlayerThatPlays() {
        FakeMprisPlayer vlc(m_bus->address(), "org.mpris.MediaPlayer2.vlc");
        FakeMprisPlayer amarok(m_bus->address(), "org.mpris.MediaPlayer2.amarok");
        vlc.setPlayerProperties(playing({{"xesam:title", "V"}}));
        amarok.setPlayerProperties(playing({{"xesam:title", "A"}}, 0, "Paused"));
        auto bridge = makeBridge();
        QCOMPARE(bridge->fetch(Source::music).title, QStringLiteral("V"));
        QCOMPARE(bridge->serviceFor(Source::music), QStringLiteral("org.mpris.MediaPlayer2.vlc"));
        const auto status = [](FakeMprisPlayer& player, const char* value) {
            player.emitSignal("org.freedesktop.DBus.Properties", "PropertiesChanged",
                              {"org.mpris.MediaPlayer2.Player",
                               QVariantMap{{"PlaybackStatus", value}}, QStringList{}});
        };
        status(amarok, "Playing"); // vlc still plays: no change
        QTest::qWait(50);
        QCOMPARE(bridge->serviceFor(Source::music), QStringLiteral("org.mpris.MediaPlayer2.vlc"));
        status(vlc, "Paused");
        QTRY_COMPARE(bridge->serviceFor(Source::music),
                     QStringLiteral("org.mpris.MediaPlayer2.amarok"));
        m_prefs->setValue("musicPlayer", "VLC");
        QCOMPARE(bridge->serviceFor(Source::music), QStringLiteral("org.mpris.MediaPlayer2.vlc"));
    }

    void pidAndNameComeFromTheBus() {
        auto player = std::make_unique<FakeMprisPlayer>(m_bus->address(),
                                                        "org.mpris.MediaPlayer2.mpv.instance9");
        player->setPlayerProperties(playing({{"xesam:title", "x"}}));
        auto bridge = makeBridge();
        QCOMPARE(bridge->pid(Source::music),
                 std::optional<qint64>(QCoreApplication::applicationPid()));
        // The name is read by a sample and kept; asking for it never calls the player.
        QCOMPARE(bridge->displayName(Source::music), QStringLiteral("mpv"));
        bridge->fetch(Source::music);
        const int calls = bridge->callsMade();
        QCOMPARE(bridge->displayName(Source::music), QStringLiteral("Fake Player"));
        QCOMPARE(bridge->callsMade(), calls);
        // Another process under the same name: its own name, here a blank one.
        player.reset();
        QTRY_VERIFY(bridge->serviceFor(Source::music).isEmpty());
        player = std::make_unique<FakeMprisPlayer>(m_bus->address(),
                                                   "org.mpris.MediaPlayer2.mpv.instance9");
        player->setIdentity(" ");
        QTRY_VERIFY(!bridge->serviceFor(Source::music).isEmpty());
        bridge->fetch(Source::music);
        QCOMPARE(bridge->displayName(Source::music), QStringLiteral("mpv"));
        QCOMPARE(bridge->displayName(Source::spotify), QStringLiteral("Spotify"));
    }
};

QTEST_GUILESS_MAIN(tst_MprisPlayerBridge)
#include "tst_MprisPlayerBridge.moc"
