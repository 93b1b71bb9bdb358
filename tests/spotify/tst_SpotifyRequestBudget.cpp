#include "spotify/SpotifyRequestBudget.h"

#include <QTest>

using namespace MirlPlayer;

class tst_SpotifyRequestBudget : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void emptyBudgetGrantsNow() {
        SpotifyRequestBudget budget;
        QCOMPARE(budget.reserve(100.0, false), 100.0);
        SpotifyRequestBudget bulk;
        QCOMPARE(bulk.reserve(100.0, true), 100.0);
    }

    void requestsAtOneMomentAreSpacedAndCappedPerWindow() {
        SpotifyRequestBudget budget;
        const double now = 500.0;
        double last = 0;
        for (int i = 0; i < 24; ++i) {
            const double slot = budget.reserve(now, false);
            QVERIFY2(qAbs(slot - (now + 0.25 * i)) < 1e-9, qPrintable(QString::number(slot)));
            last = slot;
        }
        QVERIFY(qAbs(last - (now + 5.75)) < 1e-9);
        // The 25th waits until the first booking has left its window.
        QVERIFY(qAbs(budget.reserve(now, false) - (now + 30.01)) < 1e-9);
    }

    void bulkRequestsLeaveRoomForOrdinaryOnes() {
        SpotifyRequestBudget bulk;
        const double now = 0.0;
        for (int i = 0; i < 10; ++i)
            bulk.reserve(now, true);
        SpotifyRequestBudget ordinary = bulk;
        QVERIFY(qAbs(bulk.reserve(now, true) - 30.01) < 1e-9);
        QVERIFY(qAbs(ordinary.reserve(now, false) - 2.5) < 1e-9);
    }

    void bookingsAgeOutOfTheWindow() {
        SpotifyRequestBudget budget;
        budget.reserve(0.0, false);
        budget.reserve(10.0, false);
        // A booking exactly one window old is gone; the other stays.
        budget.reserve(30.0, false);
        QCOMPARE(budget.booked.size(), size_t(2));
        QCOMPARE(budget.booked.front(), 10.0);
    }

    void laterBookingsAreNeitherCrowdedNorOverloaded_data() {
        QTest::addColumn<std::vector<double>>("booked");
        QTest::addColumn<double>("now");
        QTest::addColumn<bool>("bulk");
        QTest::addColumn<double>("expected");
        // Too close to a future slot: placed just behind it.
        QTest::newRow("spacing to a future slot")
            << std::vector<double>{10.1} << 10.0 << false << 10.35;
        // A gap wide enough between bookings is used.
        QTest::newRow("gap between slots")
            << std::vector<double>{10.0, 11.0} << 10.5 << false << 10.5;
        // Ten future slots fill a window ahead: a bulk request may neither precede nor join them.
        std::vector<double> run;
        for (int i = 0; i < 10; ++i)
            run.push_back(20.0 + i);
        QTest::newRow("run ahead, bulk") << run << 0.0 << true << 50.01;
        QTest::newRow("run ahead, ordinary") << run << 0.0 << false << 0.0;
    }
    void laterBookingsAreNeitherCrowdedNorOverloaded() {
        QFETCH(std::vector<double>, booked);
        QFETCH(double, now);
        QFETCH(bool, bulk);
        QFETCH(double, expected);
        SpotifyRequestBudget budget;
        budget.booked = booked;
        const double slot = budget.reserve(now, bulk);
        QVERIFY2(qAbs(slot - expected) < 1e-9, qPrintable(QString::number(slot, 'f', 4)));
        QVERIFY(std::is_sorted(budget.booked.begin(), budget.booked.end()));
        QCOMPARE(budget.booked.size(), booked.size() + 1);
    }
};

QTEST_GUILESS_MAIN(tst_SpotifyRequestBudget)
#include "tst_SpotifyRequestBudget.moc"
