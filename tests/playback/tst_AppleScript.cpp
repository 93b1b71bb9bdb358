#include "playback/AppleScript.h"

#include <QTest>

using namespace MirlPlayer;
using namespace MirlPlayer::AppleScript;

Q_DECLARE_METATYPE(MirlPlayer::Source)

namespace {
QString fields(std::initializer_list<QString> parts) {
    QStringList list(parts);
    return list.join(QChar(fieldSeparator));
}
} // namespace

class tst_AppleScript : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void sampleScriptOfSpotifyAsksForEightFieldsInMilliseconds() {
        const QString expected = QStringLiteral(
            "set sep to (ASCII character 30)\n"
            "if application \"Spotify\" is running then\n"
            "\ttell application \"Spotify\"\n"
            "\t\tset pState to player state as string\n"
            "\t\tif pState is \"stopped\" then return \"stopped\"\n"
            "\t\tset curTrack to current track\n"
            "\t\treturn pState & sep & (name of curTrack) & sep & (artist of curTrack) & sep & "
            "(album of curTrack) & sep & ((duration of curTrack) as integer) & sep & ((round "
            "((player position) * 1000)) as integer) & sep & (artwork url of curTrack) & sep & "
            "(id of curTrack)\n"
            "\tend tell\n"
            "else\n"
            "\treturn \"notrunning\"\n"
            "end if");
        QCOMPARE(sampleScript(Source::spotify), expected);
    }

    void sampleScriptOfMusicConvertsSecondsAndHasSixFields() {
        const QString script = sampleScript(Source::music);
        QVERIFY(script.contains(
            u"\t\treturn pState & sep & (name of curTrack) & sep & (artist of curTrack) & sep & "
            u"(album of curTrack) & sep & ((round ((duration of curTrack) * 1000)) as integer) & "
            u"sep & ((round ((player position) * 1000)) as integer)\n"));
        QVERIFY(script.contains(
            u"if application \"Music\" is running then\n\ttell application \"Music\"\n"));
        QVERIFY(!script.contains(u"artwork url"));
        QVERIFY(!script.endsWith(u'\n'));
        QVERIFY(sampleScript(Source::none).isEmpty());
    }

    void commandScriptsAreOneLine_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("expected");
        QTest::newRow("play or pause")
            << commandScript("Music", "playpause") << "tell application \"Music\" to playpause";
        QTest::newRow("next") << commandScript("Spotify", "next track")
                              << "tell application \"Spotify\" to next track";
        QTest::newRow("previous") << commandScript("Spotify", "previous track")
                                  << "tell application \"Spotify\" to previous track";
        QTest::newRow("seek with three decimals")
            << seekScript("Spotify", 20.0)
            << "tell application \"Spotify\" to set player position to 20.000";
        QTest::newRow("seek rounds to milliseconds")
            << seekScript("Music", 61.23456)
            << "tell application \"Music\" to set player position to 61.235";
        QTest::newRow("skip to a queued track")
            << skipToQueuedScript() << "tell application \"Spotify\" to next track";
        QTest::newRow("timeout wraps the script")
            << withTimeout("tell application \"Music\" to playpause")
            << "with timeout of 5 seconds\ntell application \"Music\" to playpause\nend timeout";
    }
    void commandScriptsAreOneLine() {
        QFETCH(QString, script);
        QFETCH(QString, expected);
        QCOMPARE(script, expected);
    }

    void outputLosesOnlyItsOuterNewlines() {
        QCOMPARE(trimNewlines("\r\nplaying\x1e"
                              "a\n\n"),
                 QStringLiteral("playing\x1e"
                                "a"));
        QCOMPARE(trimNewlines(" paused \n"), QStringLiteral(" paused "));
        QCOMPARE(trimNewlines("a\nb"), QStringLiteral("a\nb"));
        QCOMPARE(trimNewlines("\n\n"), QString());
    }

    void repliesWithoutATrackGiveTheEmptySnapshot_data() {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<Source>("source");
        QTest::newRow("not running") << "notrunning" << Source::spotify;
        QTest::newRow("stopped player") << "stopped" << Source::music;
        QTest::newRow("empty reply") << "" << Source::spotify;
        QTest::newRow("five fields") << fields({"playing", "t", "a", "b", "1000"}) << Source::music;
        QTest::newRow("state only") << "playing" << Source::spotify;
        QTest::newRow("stopped in capitals is a state, still too few fields")
            << "STOPPED" << Source::music;
    }
    void repliesWithoutATrackGiveTheEmptySnapshot() {
        QFETCH(QString, reply);
        QFETCH(Source, source);
        QCOMPARE(parseReply(reply, source), Snapshot::empty(source));
    }

    void pausedMusicReplyFillsTheSnapshot() {
        const Snapshot s = parseReply(fields({"paused", "Song", "Singer", "Record", "1000", "250"}),
                                      Source::music);
        QCOMPARE(s.source, Source::music);
        QVERIFY(!s.playing);
        QVERIFY(s.hasTrack);
        QCOMPARE(s.title, QStringLiteral("Song"));
        QCOMPARE(s.artist, QStringLiteral("Singer"));
        QCOMPARE(s.album, QStringLiteral("Record"));
        QCOMPARE(s.durationMs, 1000.0);
        QCOMPARE(s.positionMs, 250.0);
        QVERIFY(!s.artURL);
        QVERIFY(!s.trackURI);
    }

    void optionalFieldsDependOnCountAndSource_data() {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<Source>("source");
        QTest::addColumn<std::optional<QString>>("artURL");
        QTest::addColumn<std::optional<QString>>("trackURI");
        const QString six = fields({"playing", "t", "a", "b", "1", "2"});
        const QString sep{QChar(fieldSeparator)};
        QTest::newRow("spotify, eight fields")
            << six + sep + "https://i.scdn.co/x" + sep + "spotify:track:abc" << Source::spotify
            << std::optional<QString>("https://i.scdn.co/x")
            << std::optional<QString>("spotify:track:abc");
        QTest::newRow("spotify, seven fields")
            << six + sep + "https://i.scdn.co/x" << Source::spotify
            << std::optional<QString>("https://i.scdn.co/x") << std::optional<QString>();
        QTest::newRow("music, eight fields keeps art, never a track id")
            << six + sep + "art" + sep + "id" << Source::music << std::optional<QString>("art")
            << std::optional<QString>();
        QTest::newRow("empty strings stay empty strings")
            << six + sep + sep << Source::spotify << std::optional<QString>(QString())
            << std::optional<QString>(QString());
    }
    void optionalFieldsDependOnCountAndSource() {
        QFETCH(QString, reply);
        QFETCH(Source, source);
        QFETCH(std::optional<QString>, artURL);
        QFETCH(std::optional<QString>, trackURI);
        const Snapshot s = parseReply(reply, source);
        QVERIFY(s.hasTrack);
        QCOMPARE(s.artURL, artURL);
        QCOMPARE(s.trackURI, trackURI);
    }

    void stateAndNumbersAreReadStrictly_data() {
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("duration");
        QTest::addColumn<bool>("playing");
        QTest::addColumn<double>("durationMs");
        QTest::newRow("capital letters still play") << "PLAYING"
                                                    << "1000" << true << 1000.0;
        QTest::newRow("paused") << "paused"
                                << "1000" << false << 1000.0;
        QTest::newRow("unknown state") << "fast forwarding"
                                       << "1000" << false << 1000.0;
        QTest::newRow("fraction") << "playing"
                                  << "1234.5" << true << 1234.5;
        QTest::newRow("leading blank reads 0") << "playing"
                                               << " 1000" << true << 0.0;
        QTest::newRow("trailing text reads 0") << "playing"
                                               << "1000ms" << true << 0.0;
        QTest::newRow("not a number") << "playing"
                                      << "nan" << true << 0.0;
        QTest::newRow("infinity") << "playing"
                                  << "inf" << true << 0.0;
        QTest::newRow("missing value") << "playing"
                                       << "missing value" << true << 0.0;
        QTest::newRow("empty") << "playing"
                               << "" << true << 0.0;
    }
    void stateAndNumbersAreReadStrictly() {
        QFETCH(QString, state);
        QFETCH(QString, duration);
        QFETCH(bool, playing);
        QFETCH(double, durationMs);
        const Snapshot s =
            parseReply(fields({state, "t", "a", "b", duration, "5"}), Source::spotify);
        QVERIFY(s.hasTrack);
        QCOMPARE(s.playing, playing);
        QCOMPARE(s.durationMs, durationMs);
        QCOMPARE(s.positionMs, 5.0);
    }

    void separatorInATitleShiftsTheFieldsWithoutError() {
        // "A\x1eB" as a title: the artist lands in the album, the album in the duration, ...
        const Snapshot s = parseReply(
            fields({"playing", "A", "B", "Artist", "Album", "1000", "250"}), Source::music);
        QVERIFY(s.hasTrack);
        QCOMPARE(s.title, QStringLiteral("A"));
        QCOMPARE(s.artist, QStringLiteral("B"));
        QCOMPARE(s.album, QStringLiteral("Artist"));
        QCOMPARE(s.durationMs, 0.0);
        QCOMPARE(s.positionMs, 1000.0);
        QCOMPARE(s.artURL, std::optional<QString>("250"));
    }

    void emptyTitleStillCountsAsATrack() {
        const Snapshot s = parseReply(fields({"paused", "", "", "", "0", "0"}), Source::spotify);
        QVERIFY(s.hasTrack);
        QVERIFY(s.title.isEmpty());
    }
};

QTEST_APPLESS_MAIN(tst_AppleScript)
#include "tst_AppleScript.moc"
