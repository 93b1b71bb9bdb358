#include "playback/QueueHandoffTiming.h"

#include <QTest>
#include <cmath>

using namespace MirlPlayer;

// Each row is a sequence of Spotify samples "uri position duration playing [empty] [busy]" (an
// uri of "-" is a silent player, "attempted:X" starts with a handoff from X already tried) with
// the answer expected to the last one: "nothing", "advance" or "boundary R".
class tst_QueueHandoffTiming : public QObject {
    Q_OBJECT

    static double number(const QString& text) { return text == u"nan" ? NAN : text.toDouble(); }

    static QString run(QueueHandoffTiming& timing, const QString& samples) {
        QString answer;
        for (const QString& sample : samples.split(u';', Qt::SkipEmptyParts)) {
            const QStringList f = sample.simplified().split(u' ');
            if (f[0].startsWith(u"attempted:")) {
                timing.attemptedURI = f[0].mid(10);
                continue;
            }
            const std::optional<QString> uri =
                f[0] == u"-" ? std::nullopt : std::optional<QString>(f[0]);
            const auto action = timing.update(uri, f[3] == u"play", !f.contains(u"empty"),
                                              f.contains(u"busy"), number(f[1]), number(f[2]));
            answer = action.kind == QueueHandoffTiming::Action::advanceNow
                         ? QStringLiteral("advance")
                     : action.kind == QueueHandoffTiming::Action::boundaryIn
                         ? QStringLiteral("boundary %1").arg(action.seconds)
                         : QStringLiteral("nothing");
        }
        return answer;
    }

private Q_SLOTS:
    void answersEachSample_data() {
        QTest::addColumn<QString>("samples");
        QTest::addColumn<QString>("answer");
        QTest::newRow("far from the end") << "a 100 200 play"
                                          << "nothing";
        QTest::newRow("within the window") << "a 195 200 play"
                                           << "boundary 5";
        QTest::newRow("exactly the window") << "a 192 200 play"
                                            << "boundary 8";
        QTest::newRow("paused near the end") << "a 195 200 pause"
                                             << "nothing";
        QTest::newRow("past the end") << "a 201 200 play"
                                      << "nothing";
        QTest::newRow("position not a number") << "a nan 200 play"
                                               << "nothing";
        QTest::newRow("track ends, next one starts") << "a 197 200 play; b 1 180 play"
                                                     << "advance";
        QTest::newRow("skip in mid-song") << "a 100 200 play; b 1 180 play"
                                          << "nothing";
        QTest::newRow("skip 3 s before the end") << "a 197 200 play; b 0 180 play"
                                                 << "advance";
        QTest::newRow("last seen 4.1 s before the end") << "a 195.9 200 play; b 1 180 play"
                                                        << "nothing";
        QTest::newRow("stopped 0.8 s before the end") << "a 197 200 play; a 199.2 200 pause"
                                                      << "advance";
        QTest::newRow("stopped 1.2 s before the end") << "a 197 200 play; a 198.8 200 pause"
                                                      << "nothing";
        QTest::newRow("paused before the end, then another song") << "a 197 200 pause; b 1 180 play"
                                                                  << "nothing";
        QTest::newRow("queue filled a second before the end")
            << "a 198 200 play empty; b 1 180 play"
            << "advance";
        QTest::newRow("edits locked, then the end") << "a 198 200 play busy; b 1 180 play"
                                                    << "advance";
        QTest::newRow("no queue at the change") << "a 198 200 play; b 1 180 play empty"
                                                << "nothing";
        QTest::newRow("player went silent") << "a 198 200 play; - 0 0 pause"
                                            << "nothing";
        QTest::newRow("handed off at the wake-up, then the player moves on")
            << "attempted:a; a 199.6 200 play; c 0 180 play"
            << "nothing";
        QTest::newRow("the same song handed over again plays afresh")
            << "a 197 200 play; b 1 180 play; a 0 200 play; a 197 200 play; c 1 180 play"
            << "advance";
        QTest::newRow("scrubbed back far from the end re-arms")
            << "attempted:a; a 50 200 play; a 196 200 play"
            << "boundary 4";
        QTest::newRow("exactly 8 s left does not re-arm")
            << "attempted:a; a 192 200 play; a 196 200 play"
            << "nothing";
        QTest::newRow("a sample without numbers does not re-arm")
            << "attempted:a; a nan 200 play; a 196 200 play"
            << "nothing";
    }
    void answersEachSample() {
        QFETCH(QString, samples);
        QFETCH(QString, answer);
        QueueHandoffTiming timing;
        QCOMPARE(run(timing, samples), answer);
    }
};

QTEST_APPLESS_MAIN(tst_QueueHandoffTiming)
#include "tst_QueueHandoffTiming.moc"
