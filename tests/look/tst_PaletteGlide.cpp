#include "core/Clock.h"
#include "look/OKLab.h"
#include "look/PaletteGlide.h"
#include "look/Ramp.h"

#include <QSignalSpy>
#include <QTest>

using namespace MirlPlayer;

namespace {

const Palette kWarm{{0.02, 0.7, 0.9}, {0.06, 0.6, 0.95}, {0.1, 0.5, 0.9}, {0.13, 0.6, 0.85}};
const Palette kCool{{0.55, 0.6, 0.9}, {0.6, 0.7, 0.9}, {0.66, 0.5, 0.95}, {0.7, 0.6, 0.8}};

bool sameColour(const HSB& x, const HSB& y) {
    return std::abs(x.h - y.h) < 1e-9 && std::abs(x.s - y.s) < 1e-9 && std::abs(x.b - y.b) < 1e-9;
}

} // namespace

class tst_PaletteGlide : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void glideBlendsWithSmoothstepThenSettlesOnce_data() {
        QTest::addColumn<double>("elapsed");
        QTest::addColumn<double>("e"); // smoothstep of elapsed / 0.9
        QTest::newRow("quarter way") << 0.225 << 0.15625;
        QTest::newRow("half way") << 0.45 << 0.5;
        QTest::newRow("three quarters") << 0.675 << 0.84375;
    }
    void glideBlendsWithSmoothstepThenSettlesOnce() {
        QFETCH(double, elapsed);
        QFETCH(double, e);
        ManualClock clock;
        PaletteGlide glide(clock);
        QSignalSpy settled(&glide, &PaletteGlide::settled);
        // From one colour to four: the one is repeated to blend entry by entry.
        const HSB from{0.5, 0.12, 1.0};
        const double start = clock.now();
        glide.glideTo({from}, kWarm);
        QVERIFY(glide.isGliding());
        clock.advance(elapsed);
        glide.step();
        QCOMPARE(glide.palette()->size(), 4);
        for (int i = 0; i < 4; ++i)
            QVERIFY(sameColour((*glide.palette())[i], blend(from, kWarm[i], e)));
        QCOMPARE(settled.count(), 0);

        clock.set(start + PaletteGlide::duration);
        glide.step();
        QCOMPARE(*glide.palette(), kWarm);
        QCOMPARE(settled.count(), 1);
        QVERIFY(!glide.isGliding());
        glide.step();
        QCOMPARE(settled.count(), 1);
        // Back to one colour: the padding is gone at the end.
        glide.glideTo(*glide.palette(), {from});
        clock.advance(1.0);
        glide.step();
        QCOMPARE(*glide.palette(), Palette{from});
    }

    void theRampFollowsThePaletteAsDrawn() {
        ManualClock clock;
        PaletteGlide glide(clock);
        QVERIFY(glide.jumpTo(kWarm));
        QVERIFY(!glide.jumpTo(kWarm));
        QVERIFY(distance(hsbToOklab(glide.rampAt(0.0)), hsbToOklab(kWarm[0])) < 2e-3);
        QCOMPARE(glide.rampAt(-3.0), glide.rampAt(0.0));
        QCOMPARE(glide.rampAt(0.5), makeRamp(kWarm, PaletteGlide::rampSize)[48]);
        const HSB warmLow = glide.rampAt(0.0);
        glide.jumpTo(kCool);
        QVERIFY(distance(hsbToOklab(glide.rampAt(0.0)), hsbToOklab(warmLow)) > 0.05);
    }
};

QTEST_GUILESS_MAIN(tst_PaletteGlide)
#include "tst_PaletteGlide.moc"
