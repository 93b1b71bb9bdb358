// The library view's small rules, each as a table: single and double clicks, where a dragged pin
// lands, the filter field that slips away, pull to refresh, the gliding names, and the switch
// that points the program at a Spotify stand-in.
#include "library/PinDrop.h"
#include "library/RowClickTiming.h"
#include "library/ScrollEdges.h"
#include "spotify/SpotifyServiceOverride.h"

#include <QTest>

using namespace MirlPlayer;

Q_DECLARE_METATYPE(std::optional<QString>)

class tst_LibraryViewRules : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // Clicks as "id@seconds"; outcomes i(gnored), d(ouble click), w(aiting).
    void clicksAreToldApart_data() {
        QTest::addColumn<QStringList>("clicks");
        QTest::addColumn<QString>("outcomes");
        QTest::newRow("one click waits") << QStringList{"a@1"} << "w";
        QTest::newRow("two on one row") << QStringList{"a@1", "a@1.1"} << "wd";
        QTest::newRow("second on another row starts over")
            << QStringList{"a@1", "b@1.1", "b@1.2"} << "wwd";
        QTest::newRow("third click of a triple is swallowed")
            << QStringList{"a@1", "a@1.1", "a@1.3"} << "wdi";
        QTest::newRow("a click 0.3 s after a double click counts")
            << QStringList{"a@1", "a@1.1", "a@1.45"} << "wdw";
    }
    void clicksAreToldApart() {
        QFETCH(QStringList, clicks);
        RowClickTiming timing;
        QString got;
        for (const QString& click : clicks) {
            const auto parts = click.split(u'@');
            const auto outcome = timing.click(parts[0], parts[1].toDouble());
            got += outcome == RowClickTiming::Outcome::ignored       ? u'i'
                   : outcome == RowClickTiming::Outcome::doubleClick ? u'd'
                                                                     : u'w';
        }
        QTEST(got, "outcomes");
    }

    void aSingleClickWaitsForTheShorterOfTheDesktopIntervalAndAMoment() {
        QCOMPARE(RowClickTiming::waitFor(0.5), 0.22);
        QCOMPARE(RowClickTiming::waitFor(0.15), 0.15);
        RowClickTiming timing;
        timing.click(QStringLiteral("a"), 1);
        QCOMPARE(timing.expire(), std::optional<QString>(QStringLiteral("a")));
        QCOMPARE(timing.expire(), std::nullopt); // plays once
    }

    void aDraggedPinLandsBeforeTheRowBelowThePointer_data() {
        QTest::addColumn<QPointF>("pointer");
        QTest::addColumn<QString>("dragged");
        QTest::addColumn<QStringList>("pins");
        QTest::addColumn<std::optional<QString>>("target");
        const QStringList abc{"a", "b", "c"};
        const std::optional<QString> none, end(pinEndMarker);
        QTest::newRow("above the first")
            << QPointF(50, 5) << "c" << abc << std::optional<QString>("a");
        QTest::newRow("between") << QPointF(50, 40) << "c" << abc << std::optional<QString>("b");
        QTest::newRow("the dragged pin is left out")
            << QPointF(50, 40) << "b" << abc << std::optional<QString>("c");
        QTest::newRow("exactly at a middle: the next")
            << QPointF(50, 45) << "a" << abc << std::optional<QString>("c");
        QTest::newRow("below all: the end") << QPointF(50, 150) << "a" << abc << end;
        QTest::newRow("a pin not laid out yet counts as far down")
            << QPointF(50, 150) << "a" << QStringList{"a", "b", "c", "d"}
            << std::optional<QString>("d");
        QTest::newRow("7 points beside: still a reorder")
            << QPointF(107, 5) << "c" << abc << std::optional<QString>("a");
        QTest::newRow("9 points beside: removed") << QPointF(109, 5) << "c" << abc << none;
        QTest::newRow("left of the sidebar") << QPointF(-9, 5) << "c" << abc << none;
        QTest::newRow("below the sidebar") << QPointF(50, 201) << "c" << abc << none;
    }
    void aDraggedPinLandsBeforeTheRowBelowThePointer() {
        QFETCH(QPointF, pointer);
        QFETCH(QString, dragged);
        QFETCH(QStringList, pins);
        const QHash<QString, QRectF> frames{
            {"a", {0, 0, 100, 30}}, {"b", {0, 30, 100, 30}}, {"c", {0, 60, 100, 30}}};
        QTEST(pinDropTarget(pointer, QRectF(0, 0, 100, 200), pins, dragged, frames), "target");
    }

    // Ticks of wheel movement (down positive), each at the offset given.
    void theFilterSlipsAwayAndReturns_data() {
        QTest::addColumn<QList<QPointF>>("ticks"); // (delta, offset)
        QTest::addColumn<bool>("hidden");
        QTest::newRow("three 10-point ticks down hide")
            << QList<QPointF>{{10, 100}, {10, 110}, {10, 120}} << true;
        QTest::newRow("two ticks down do not") << QList<QPointF>{{10, 100}, {10, 110}} << false;
        QTest::newRow("two 10-point ticks up show again")
            << QList<QPointF>{{10, 100}, {10, 110}, {10, 120}, {-10, 110}, {-10, 100}} << false;
        QTest::newRow("one tick up does not")
            << QList<QPointF>{{10, 100}, {10, 110}, {10, 120}, {-10, 110}} << true;
        QTest::newRow("near the top it always shows")
            << QList<QPointF>{{10, 100}, {10, 110}, {10, 120}, {5, 30}} << false;
        QTest::newRow("a turn restarts the travel")
            << QList<QPointF>{{10, 100}, {10, 110}, {-1, 109}, {10, 119}, {10, 129}} << false;
    }
    void theFilterSlipsAwayAndReturns() {
        QFETCH(QList<QPointF>, ticks);
        ScrollAwayState state;
        for (const QPointF& tick : ticks)
            state.update(tick.x(), false, true, tick.y());
        QTEST(state.hidden, "hidden");
    }

    void aWheelNotchCountsTenTouchpadPoints() {
        QCOMPARE(scrollWheelDelta(0, -120), 10.0);
        QCOMPARE(scrollWheelDelta(-3, -120), 3.0);
    }

    void aPullFiresOnceUntilTheListRestsAgain() {
        PullToRefreshState pull;
        pull.distance = 60;
        QString fired;
        for (double overscroll : {30.0, 60.0, 80.0, 20.0, 70.0, 0.0, 65.0})
            fired += pull.update(overscroll) ? u'F' : u'.';
        QCOMPARE(fired, QStringLiteral(".F....F"));
        QCOMPARE(pull.progress, 1.0);
    }

    void aHoverEndingMidStartSlowsWithoutAJump() {
        SidebarMarqueeMotion start{0, 0, 0, SidebarMarqueeMotion::speed, 0.5};
        const double at = 0.3;
        const SidebarMarqueeMotion stop{at, start.position(at), start.speedAt(at), 0, 0.5};
        QCOMPARE(stop.speedAt(at), start.speedAt(at));
        QVERIFY(stop.position(at + 0.01) > stop.position(at));
        QCOMPARE(stop.speedAt(at + 0.5), 0.0);
        QCOMPARE(start.position(1.5), 22 * 0.5 * 0.5 + 22 * 1.0); // eased half, then steady
    }

    void onlyALoopbackStandInIsTaken_data() {
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("api");
        QTest::newRow("IPv4 loopback") << "http://127.0.0.1:4000"
                                       << "http://127.0.0.1:4000/v1/";
        QTest::newRow("another loopback address") << "http://127.0.0.2:80/x"
                                                  << "http://127.0.0.2:80/v1/";
        QTest::newRow("IPv6 loopback") << "http://[::1]:4000"
                                       << "http://[::1]:4000/v1/";
        QTest::newRow("a name") << "http://localhost:4000"
                                << "";
        QTest::newRow("a name starting like loopback") << "http://127.0.0.1.example.com"
                                                       << "";
        QTest::newRow("another machine") << "https://10.0.0.7:4000"
                                         << "";
        QTest::newRow("not the web") << "file://127.0.0.1/etc"
                                     << "";
        QTest::newRow("credentials in it") << "http://u:p@127.0.0.1:4000"
                                           << "";
    }
    void onlyALoopbackStandInIsTaken() {
        QFETCH(QString, base);
        QStringList log;
        const auto endpoints = loopbackEndpoints(base, [&](const QString& line) { log << line; });
        QTEST(endpoints ? endpoints->apiBase.toString() : QString(), "api");
        QCOMPARE(log.size(), 1); // taken or refused, it is said
        if (endpoints)
            QCOMPARE(endpoints->token.path(), QStringLiteral("/api/token"));
    }
};

QTEST_GUILESS_MAIN(tst_LibraryViewRules)
#include "tst_LibraryViewRules.moc"
