#include "audio/LoudnessMatcher.h"

#include <QTest>
#include <cmath>
#include <vector>

using namespace MirlPlayer;

namespace {

// A block whose mean square is `db` decibels (a constant signal: its square is the mean).
std::vector<float> blockAt(double db, std::size_t n = 512) {
    return std::vector<float>(n, float(std::sqrt(std::pow(10.0, db / 10.0))));
}

float gainFor(LoudnessMatcher& m, const std::vector<float>& block, bool enabled = true) {
    return m.gain(block.data(), block.size(), block.data(), block.size(), 48000, enabled);
}

} // namespace

class tst_LoudnessMatcher : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void gainFollowsTheFirstAudibleBlock_data() {
        QTest::addColumn<double>("db");
        QTest::addColumn<double>("gain");
        QTest::addColumn<bool>("learns");
        QTest::newRow("digital silence") << -200.0 << 1.0 << false;
        QTest::newRow("exactly at the gate") << -50.0 << 1.0 << false;
        QTest::newRow("just above the gate") << -49.9 << std::pow(10.0, 18.0 / 20) << true;
        QTest::newRow("quiet gets the ceiling") << -24.0 << std::pow(10.0, 18.0 / 20) << true;
        QTest::newRow("moderate is lifted") << -16.0 << std::pow(10.0, 10.0 / 20) << true;
        QTest::newRow("target level is left alone") << -6.0 << 1.0 << true;
        QTest::newRow("loud is never cut") << 0.0 << 1.0 << true;
    }
    void gainFollowsTheFirstAudibleBlock() {
        QFETCH(double, db);
        QFETCH(double, gain);
        QFETCH(bool, learns);
        LoudnessMatcher m;
        const float g = gainFor(m, blockAt(db));
        QVERIFY2(std::abs(g - gain) < 1e-4 * gain, qPrintable(QString::number(g)));
        QCOMPARE(m.energy != 0.0f, learns);
        if (learns) // the first audible block is taken at once, without the filter
            QVERIFY(std::abs(10 * std::log10(m.energy) - db) < 1e-3);
    }

    void interleavedStereoLearnsAsSeparateChannelsDo() {
        // Left and right at different levels, over blocks that pass the gate and one that does
        // not: both forms of the block give the same gains and the same learned energy.
        LoudnessMatcher planar;
        LoudnessMatcher interleaved;
        for (const double db : {-30.0, -20.0, -70.0, -12.0}) {
            const std::vector<float> left = blockAt(db, 300);
            const std::vector<float> right = blockAt(db - 9, 300);
            std::vector<float> both;
            for (std::size_t i = 0; i < left.size(); ++i) {
                both.push_back(left[i]);
                both.push_back(right[i]);
            }
            const float a =
                planar.gain(left.data(), left.size(), right.data(), right.size(), 48000, true);
            const float b = interleaved.gainInterleaved(both.data(), left.size(), 48000, true);
            QVERIFY2(std::abs(a - b) <= 1e-5f * a, qPrintable(QString("%1 vs %2").arg(a).arg(b)));
            QVERIFY(std::abs(planar.energy - interleaved.energy) <= 1e-6f * planar.energy);
        }
        QVERIFY(planar.heard > 0.0);
        QCOMPARE(interleaved.heard, planar.heard);
    }

    void laterBlocksMoveSlowlyAndFasterAtFirst() {
        LoudnessMatcher early;
        gainFor(early, blockAt(-20));
        gainFor(early, blockAt(-10));
        LoudnessMatcher settled;
        gainFor(settled, blockAt(-20));
        settled.heard = 5.0; // past the fast start
        gainFor(settled, blockAt(-10));
        const float target = float(std::pow(10.0, -1.0));
        QVERIFY(early.energy < target && settled.energy < target);
        QVERIFY(early.energy > settled.energy);
        // One block of 512 frames: dt = 10.67 ms; tau 0.5 s at first.
        const double start = std::pow(10.0, -2.0);
        const double expected = start + (target - start) * (1 - std::exp(-512.0 / 48000 / 0.5));
        QVERIFY(std::abs(early.energy - expected) < 1e-6);
    }

    void switchedOffItLearnsNothingAndForgetsNothing() {
        LoudnessMatcher m;
        gainFor(m, blockAt(-20));
        const float energy = m.energy;
        const double heard = m.heard;
        QCOMPARE(gainFor(m, blockAt(-40), false), 1.0f);
        QCOMPARE(m.energy, energy);
        QCOMPARE(m.heard, heard);
        QVERIFY(gainFor(m, blockAt(-200)) > 1.0f); // back on: the old energy still counts
    }
};

QTEST_APPLESS_MAIN(tst_LoudnessMatcher)
#include "tst_LoudnessMatcher.moc"
