#include "core/Environment.h"
#include "core/FocusLog.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

class tst_FocusLog : public QObject {
    Q_OBJECT

    static QString read(const QString& path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }

private Q_SLOTS:
    void linesAreStampedWithTheTimeOfDay() {
        QTemporaryDir dir;
        FocusLog log(dir.filePath("logs/spotify-focus.log"));
        log.logLine("MIRL PRO started");
        log.logCommand("Spotify: playpause");
        log.flush();
        const QStringList lines = read(log.path()).split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 2);
        const QRegularExpression stamp(R"(^\d\d:\d\d:\d\d\.\d\d\d(Z|[+-]\d\d:\d\d) )");
        QVERIFY(stamp.match(lines[0]).hasMatch());
        QVERIFY(lines[0].endsWith(" MIRL PRO started"));
        QVERIFY(lines[1].endsWith(" command: Spotify: playpause"));
    }

    void spotifyActivationsSayWhatWasLastSent() {
        ManualClock clock;
        QTemporaryDir dir;
        FocusLog log(dir.filePath("f.log"), clock);
        log.noteActivation("ACTIVATED", "com.spotify.client", "org.gnome.Terminal");
        log.noteActivation("ACTIVATED", "firefox", "firefox"); // another application: nothing
        log.flush();
        QString text = read(log.path());
        QCOMPARE(text.count('\n'), 1);
        QVERIFY(text.contains(QRegularExpression(
            R"(Spotify ACTIVATED — last MIRL PRO command \d{9,}\.\d s ago: none \(front now: org\.gnome\.Terminal\)\n$)")));

        log.logCommand("Spotify: next track");
        log.flush();
        clock.advance(2.5);
        log.noteActivation("UNHIDDEN", "Spotify", QString());
        log.flush();
        text = read(log.path());
        QVERIFY(text.endsWith("Spotify UNHIDDEN — last MIRL PRO command 2.5 s ago: Spotify: next "
                              "track (front now: ?)\n"));
    }

    void fullLogIsDroppedWhole_data() {
        QTest::addColumn<int>("size");
        QTest::addColumn<bool>("kept");
        QTest::newRow("200000 bytes kept") << 200000 << true;
        QTest::newRow("200001 bytes dropped") << 200001 << false;
    }
    void fullLogIsDroppedWhole() {
        QFETCH(int, size);
        QFETCH(bool, kept);
        QTemporaryDir dir;
        FocusLog log(dir.filePath("f.log"));
        {
            QFile f(log.path());
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(QByteArray(size, 'x'));
        }
        log.logLine("next");
        log.flush();
        const QString text = read(log.path());
        QCOMPARE(text.startsWith('x'), kept);
        QVERIFY(text.endsWith(" next\n"));
        if (!kept)
            QCOMPARE(text.count('\n'), 1);
    }
    void debugSwitchCountsWhenPresentEvenIfEmpty() {
        // Read once, at the first use. CTest runs this case a second time with NOTCH_DEBUG set
        // to an empty value.
        QCOMPARE(debugEnabled(), qEnvironmentVariableIsSet("NOTCH_DEBUG"));
        qputenv("NOTCH_EXPAND", "");
        QVERIFY(expandForced());
        qunsetenv("NOTCH_EXPAND");
        QVERIFY(!expandForced());
    }
};

QTEST_GUILESS_MAIN(tst_FocusLog)
#include "tst_FocusLog.moc"
