#include "audio/BlockRing.h"

#include <QTest>
#include <numeric>

using namespace MirlPlayer;

class tst_BlockRing : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // Blocks of `frames` stereo frames, pushed `count` times with a wake after 1600 frames: which
    // pushes ask for a wake, and what the consumer gets back (frames, in order, none lost).
    void gathersBlocksUntilAWakeIsWorthIt_data() {
        QTest::addColumn<int>("frames");
        QTest::addColumn<int>("count");
        QTest::addColumn<QList<int>>("wakes"); // indices of the pushes that return true
        QTest::addColumn<int>("received");     // slots the consumer receives
        QTest::newRow("quanta of 960: every second one") << 960 << 4 << QList<int>{1, 3} << 4;
        QTest::newRow("quanta of 256: every seventh") << 256 << 8 << QList<int>{6} << 8;
        QTest::newRow("a long block is split, wakes at once") << 10000 << 1 << QList<int>{0} << 3;
        QTest::newRow("more than the ring holds: the newest are dropped")
            << 4096 << 20
            << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19}
            << int(BlockRing::slotCount);
    }
    void gathersBlocksUntilAWakeIsWorthIt() {
        QFETCH(int, frames);
        QFETCH(int, count);
        QFETCH(QList<int>, wakes);
        QFETCH(int, received);
        BlockRing ring;
        std::vector<float> samples(std::size_t(frames) * 2);
        std::iota(samples.begin(), samples.end(), 0.0f);
        QList<int> woke;
        for (int i = 0; i < count; ++i)
            if (ring.push({{48000, 2, 32, true, true}, quint32(frames), samples.data()}, 1600))
                woke << i;
        QCOMPARE(woke, wakes);
        int taken = 0;
        float expected = 0; // within a block the samples run on across the split
        ring.drain([&](const BlockRing::Slot& slot) {
            QCOMPARE(slot.samples[0], std::fmod(expected, float(frames) * 2));
            expected += float(slot.frames) * 2;
            ++taken;
        });
        QCOMPARE(taken, received);
        ring.drain([&](const BlockRing::Slot&) { ++taken; });
        QCOMPARE(taken, received); // each slot is taken once
    }
};

QTEST_APPLESS_MAIN(tst_BlockRing)
#include "tst_BlockRing.moc"
