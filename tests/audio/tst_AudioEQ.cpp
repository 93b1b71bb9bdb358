#include "audio/AudioEQ.h"
#include "core/Preferences.h"
#include "visualizers/VizConfig.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <memory>

using namespace MirlPlayer;

namespace {

constexpr double rate = 48000;

// Interleaved frames of a sine, with a gain per channel.
std::vector<float> sine(double frequency, double amplitude, int frames, int channels = 2,
                        double leftGain = 1, double rightGain = 1, double sampleRate = rate) {
    std::vector<float> s(size_t(frames * channels));
    for (int i = 0; i < frames; ++i) {
        const float v = float(amplitude * std::sin(2 * M_PI * frequency * i / sampleRate));
        for (int c = 0; c < channels; ++c)
            s[size_t(i * channels + c)] = v * float(c == 0 ? leftGain : rightGain);
    }
    return s;
}

// One engine with everything it reads under the test's control, and what it delivered.
struct Rig {
    QTemporaryDir dir;
    Preferences prefs{dir.filePath("preferences.conf")};
    VizConfig viz{prefs};
    ManualClock clock{0.0};
    EQTuning tuning;
    std::unique_ptr<AudioEQ> eq;
    QList<LevelArray> levels;
    QList<StereoCurve> curves;
    QStringList statuses;
    QStringList calls;

    explicit Rig(EQTuning t = {}, bool matchLoudness = false)
        : tuning(t) {
        prefs.setValue("matchLoudness", matchLoudness);
        eq = std::make_unique<AudioEQ>(prefs, viz, clock, &tuning);
        eq->onLevels = [this](const LevelArray& l) {
            levels.append(l);
            calls.append("levels");
        };
        eq->onActive = [this](bool active) { calls.append(active ? "active" : "inactive"); };
        eq->onStereo = [this](const StereoCurve& c) { curves.append(c); };
        eq->onStatus = [this](const QString& text, bool) { statuses.append(text); };
    }

    void push(const std::vector<float>& interleaved, int channels = 2, double sampleRate = rate) {
        const TapFormat format{sampleRate, true, quint32(channels), false};
        eq->processBlock(interleaved.data(), interleaved.size() / size_t(channels), format);
    }
    // Lets the GUI thread take what the sample side handed over.
    void deliver() {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }
    LevelArray pushAndTake(const std::vector<float>& interleaved, int channels = 2) {
        push(interleaved, channels);
        deliver();
        return levels.isEmpty() ? LevelArray{} : levels.last();
    }
};

int loudestColumn(const StereoCurve& c) {
    return int(std::max_element(c.begin(), c.end()) - c.begin());
}

} // namespace

class tst_AudioEQ : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // ---- the level curve ----

    void levelCurveMapsDecibelsToLevels_data() {
        QTest::addColumn<double>("db");
        QTest::addColumn<double>("level");
        QTest::newRow("full scale") << 0.0 << 1.0;
        QTest::newRow("half way down") << -35.0 << 0.25;
        QTest::newRow("floor") << -70.0 << 0.0;
        QTest::newRow("below the floor") << -90.0 << 0.0;
        QTest::newRow("above full scale is capped") << 6.0 << 1.0;
    }
    void levelCurveMapsDecibelsToLevels() {
        QFETCH(double, db);
        QFETCH(double, level);
        EQTuning flat;
        flat.tilt = 0;
        const std::vector<float> mags(1024, float(std::pow(10.0, db / 20)));
        const auto levels = AudioEQ::bandLevels(mags.data(), 1024, 128, rate, flat);
        QCOMPARE(int(levels.size()), 128);
        for (float v : levels)
            QVERIFY2(std::abs(v - level) < 1e-4, qPrintable(QString::number(v)));
    }

    void tiltPivotsAtOneKilohertz() {
        const std::vector<float> mags(1024, float(std::pow(10.0, -35.0 / 20)));
        const auto levels = AudioEQ::bandLevels(mags.data(), 1024, 128, rate, EQTuning{});
        // Low bands lose, high bands gain, about two decibels per octave.
        QVERIFY(levels.front() < 0.2f);
        QVERIFY(levels.back() > 0.3f);
        QVERIFY(std::abs(levels[68] - 0.25f) < 0.01f); // the band that holds 1 kHz
        // Nothing to map to, or too few bins to map from: no levels.
        QVERIFY(AudioEQ::bandLevels(mags.data(), 1024, 0, rate, EQTuning{}).empty());
        QVERIFY(AudioEQ::bandLevels(mags.data(), 1, 128, rate, EQTuning{}).empty());
    }

    // ---- frames and emission ----

    void theFirstEmissionNeedsAFullFrame() {
        Rig rig;
        for (int i = 0; i < 3; ++i) {
            rig.clock.advance(0.05);
            rig.push(sine(1000, 0.1, 512));
            rig.deliver();
        }
        QCOMPARE(rig.levels.size(), 0);
        rig.clock.advance(0.05);
        rig.push(sine(1000, 0.1, 512));
        rig.deliver();
        QCOMPARE(rig.levels.size(), 1);
        QCOMPARE(rig.levels.first().size(), 128);
        QCOMPARE(rig.calls, (QStringList{"active", "levels"}));
    }

    void blocksOnTheSampleQueueReachTheGuiThread() {
        Rig rig;
        const auto block = sine(1000, 0.1, 2048);
        const TapFormat format{rate, true, 2, false};
        AudioEQ& eq = *rig.eq;
        rig.clock.set(0.1);
        eq.sampleQueue().sync([&] {
            QVERIFY(eq.sampleQueue().isCurrent());
            eq.processBlock(block.data(), 2048, format);
        });
        QCOMPARE(rig.levels.size(), 0); // nothing is called on the sample queue
        rig.deliver();
        QCOMPARE(rig.levels.size(), 1);
        QCOMPARE(rig.curves.size(), 1);
        QVERIFY(rig.levels.last()[68] > 0.5);
    }

    void withoutAStereoReaderOnlyTheLevelsAreMade() {
        Rig rig;
        rig.eq->setStereoWanted(false);
        rig.clock.set(0.1);
        rig.pushAndTake(sine(1000, 0.1, 2048));
        QCOMPARE(rig.levels.size(), 1);
        QCOMPARE(rig.curves.size(), 0);
    }

    void emissionIsStrictlyLimitedToThirtyPerSecond() {
        Rig rig;
        const auto block = sine(1000, 0.1, 2048);
        rig.pushAndTake(block);
        QCOMPARE(rig.levels.size(), 1);
        rig.clock.set(1.0 / 30.0);
        rig.pushAndTake(block);
        QCOMPARE(rig.levels.size(), 1);
        rig.clock.set(1.0 / 30.0 + 1e-6);
        rig.pushAndTake(block);
        QCOMPARE(rig.levels.size(), 2);
    }

    void theLevelFollowerRisesByItsTimeConstant_data() {
        QTest::addColumn<double>("at");
        QTest::addColumn<double>("dt");
        QTest::newRow("a long pause counts as a tenth of a second") << 10.0 << 0.1;
        QTest::newRow("a frame after 40 ms") << 0.04 << 0.04;
    }
    void theLevelFollowerRisesByItsTimeConstant() {
        // A frame with one impulse in its middle has a flat spectrum: after the window, every bin
        // is 2 / N x A x w(N / 2), w(N / 2) = 2 sqrt(2/3). A is chosen to put it at -35 dB, which
        // the curve maps to (35 / 70)^2 = 0.25. From zero the follower rises by
        // 1 - exp(-dt / (attack x s)), s = smoothing x 2.8 + 0.4, and the sensitivity scales it.
        QFETCH(double, at);
        QFETCH(double, dt);
        EQTuning flat;
        flat.tilt = 0;
        Rig rig(flat);
        const int n = AudioEQ::fftSize;
        const double amplitude = std::pow(10.0, -35.0 / 20) * n / (2 * 2 * std::sqrt(2.0 / 3));
        std::vector<float> frame(size_t(2 * n), 0.0f);
        frame[size_t(n)] = frame[size_t(n + 1)] = float(amplitude);
        rig.clock.set(at);
        rig.pushAndTake(frame);
        QCOMPARE(rig.levels.size(), 1);
        const double s = 0.22 * 2.8 + 0.4;
        const double expected = 1.53 * 0.25 * (1 - std::exp(-dt / (0.025 * s)));
        for (int i = 0; i < AudioEQ::bandCount; ++i)
            QVERIFY2(
                std::abs(rig.levels.last()[i] - expected) < 2e-4,
                qPrintable(
                    QString("band %1: %2 vs %3").arg(i).arg(rig.levels.last()[i]).arg(expected)));
    }

    void theStereoFollowerSpreadsRisesAndFallsByItsConstants() {
        // A tone on the left alone lands in column 0. The kernel 0.12 0.22 0.32 0.22 0.12, with
        // the end value repeated beyond the edge, gives columns 0, 1, 2 the shares 0.66, 0.34
        // and 0.12 of it; the 70 dB window makes those ratios differences of 20 log10(ratio) /
        // 70. From zero the follower rises by 1 - exp(-dt / (0.02 s)); silence then lets it
        // fall by the factor exp(-dt / (0.09 s)).
        Rig rig;
        const double s = 0.22 * 2.8 + 0.4;
        const double bin = 64 * rate / AudioEQ::fftSize;
        rig.clock.set(10.0); // dt is at most a tenth of a second
        rig.pushAndTake(sine(bin, 0.1, AudioEQ::fftSize, 2, 1.0, 0.0));
        QCOMPARE(rig.curves.size(), 1);
        const StereoCurve up = rig.curves.last();
        const double rise = 1 - std::exp(-0.1 / (0.02 * s));
        QVERIFY(up[0] > 0 && up[0] < rise);
        const auto step = [](double ratio) { return 20 * std::log10(ratio) / 70; };
        QVERIFY(std::abs((up[0] - up[1]) - rise * step(0.66 / 0.34)) < 1e-4);
        QVERIFY(std::abs((up[0] - up[2]) - rise * step(0.66 / 0.12)) < 1e-4);
        for (int c = 3; c < AudioEQ::stereoCols; ++c)
            QCOMPARE(up[c], 0.0f);

        rig.clock.set(10.05);
        rig.pushAndTake(std::vector<float>(size_t(2 * AudioEQ::fftSize), 0.0f));
        QCOMPARE(rig.curves.size(), 2);
        const double fall = std::exp(-0.05 / (0.09 * s));
        for (int c = 0; c < 3; ++c)
            QVERIFY2(std::abs(rig.curves.last()[c] - up[c] * fall) < 1e-5,
                     qPrintable(QString::number(c)));
    }

    void signalIsAnySampleAboveTheThreshold_data() {
        QTest::addColumn<float>("sample");
        QTest::addColumn<bool>("signal");
        QTest::newRow("digital silence") << 0.0f << false;
        QTest::newRow("below a millionth") << 5e-7f << false;
        QTest::newRow("one sample above") << 2e-6f << true;
        QTest::newRow("one negative sample") << -2e-6f << true;
    }
    void signalIsAnySampleAboveTheThreshold() {
        QFETCH(float, sample);
        QFETCH(bool, signal);
        Rig rig;
        std::vector<float> block(2048 * 2, 0.0f);
        block[2 * 1500] = sample;
        block[2 * 1500 + 1] = sample;
        rig.clock.set(7.0);
        rig.pushAndTake(block);
        QCOMPARE(rig.levels.size(), 1); // silence is emitted like anything else
        QCOMPARE(rig.calls.first(), QStringLiteral("active"));
        QCOMPARE(rig.eq->lastSignalAt(), signal ? 7.0 : Clock::distantPast);
        QCOMPARE(rig.statuses,
                 signal ? QStringList{"Receiving audio from Spotify"} : QStringList{});
        rig.clock.set(8.0);
        rig.pushAndTake(block);
        QCOMPARE(rig.statuses.size(), signal ? 1 : 0); // a repeated status is not reported
    }

    void punchLeavesTheFirstFrameAfterAResetAlone() {
        EQTuning punchy;
        punchy.punch = 3.0;
        Rig withPunch(punchy);
        Rig plain;
        const auto quiet = sine(1000, 0.003, 2048);
        const auto loud = sine(1000, 0.01, 2048);
        for (Rig* rig : {&withPunch, &plain})
            rig->clock.set(0.1);
        QCOMPARE(withPunch.pushAndTake(quiet), plain.pushAndTake(quiet));
        for (Rig* rig : {&withPunch, &plain})
            rig->clock.set(0.2);
        QVERIFY(withPunch.pushAndTake(loud)[68] > plain.pushAndTake(loud)[68]);

        for (Rig* rig : {&withPunch, &plain}) {
            rig->eq->captureReset();
            rig->clock.set(0.3);
        }
        QCOMPARE(withPunch.pushAndTake(loud), plain.pushAndTake(loud));
    }

    void aResetDropsResultsStillInFlight() {
        Rig rig;
        rig.push(sine(1000, 0.1, 2048));
        const QUuid before = rig.eq->captureGeneration();
        rig.eq->captureReset();
        QVERIFY(rig.eq->captureGeneration() != before);
        rig.deliver();
        QCOMPARE(rig.levels.size(), 0);
        QCOMPARE(rig.curves.size(), 0);
        // The reset also emptied the frame: the next emission needs a full one again.
        rig.clock.set(1.0);
        rig.pushAndTake(sine(1000, 0.1, 1024));
        QCOMPARE(rig.levels.size(), 0);
        rig.clock.set(1.1);
        rig.pushAndTake(sine(1000, 0.1, 1024));
        QCOMPARE(rig.levels.size(), 1);
    }

    void malformedBlocksAreDropped_data() {
        QTest::addColumn<QString>("block");
        QTest::addColumn<bool>("analysed");
        QTest::newRow("no buffers") << "none" << false;
        QTest::newRow("no data") << "null" << false;
        QTest::newRow("no tap format") << "noFormat" << false;
        QTest::newRow("no channels") << "zeroChannels" << false;
        QTest::newRow("planes of different lengths") << "uneven" << false;
        // Not malformed: these yield no samples, and the full frame is analysed again.
        QTest::newRow("more channels than samples") << "tooManyChannels" << true;
        QTest::newRow("an empty block") << "empty" << true;
        QTest::newRow("one plane serves both sides") << "onePlane" << true;
    }
    void malformedBlocksAreDropped() {
        QFETCH(QString, block);
        QFETCH(bool, analysed);
        Rig rig;
        rig.pushAndTake(sine(1000, 0.1, 2048));
        QCOMPARE(rig.levels.size(), 1);
        rig.clock.set(1.0);

        const auto samples = sine(1000, 0.1, 512, 1);
        const AudioBuffer plane{samples.data(), samples.size() * sizeof(float)};
        const AudioBuffer shortPlane{samples.data(), 100 * sizeof(float)};
        const AudioBuffer nothing{nullptr, 0};
        const AudioBuffer emptyPlane{samples.data(), 0};
        const TapFormat planar{rate, true, 2, true};
        const TapFormat interleaved{rate, true, 2, false};
        AudioEQ& eq = *rig.eq;
        if (block == "none") {
            eq.setTapFormat(interleaved);
            eq.processBlock(std::span<const AudioBuffer>{});
        } else if (block == "null") {
            eq.setTapFormat(interleaved);
            eq.processBlock(std::span<const AudioBuffer>(&nothing, 1));
        } else if (block == "noFormat") {
            eq.setTapFormat(std::nullopt);
            eq.processBlock(std::span<const AudioBuffer>(&plane, 1));
        } else if (block == "zeroChannels") {
            eq.setTapFormat(TapFormat{rate, true, 0, false});
            eq.processBlock(std::span<const AudioBuffer>(&plane, 1));
        } else if (block == "uneven") {
            eq.setTapFormat(planar);
            const AudioBuffer planes[2] = {plane, shortPlane};
            eq.processBlock(std::span<const AudioBuffer>(planes, 2));
        } else if (block == "tooManyChannels") {
            eq.setTapFormat(TapFormat{rate, true, 8, false});
            const AudioBuffer few{samples.data(), 4 * sizeof(float)};
            eq.processBlock(std::span<const AudioBuffer>(&few, 1));
        } else if (block == "empty") {
            eq.setTapFormat(interleaved);
            eq.processBlock(std::span<const AudioBuffer>(&emptyPlane, 1));
        } else if (block == "onePlane") {
            eq.setTapFormat(planar);
            eq.processBlock(std::span<const AudioBuffer>(&plane, 1));
        }
        rig.deliver();
        QCOMPARE(rig.levels.size(), analysed ? 2 : 1);
    }

    // ---- the rolling frames ----

    void aFrameIsTheSameWhereverItsRingsStand_data() {
        QTest::addColumn<QString>("delivery");
        QTest::newRow("interleaved, wrapping") << "interleaved";
        QTest::newRow("planar, wrapping") << "planar";
        QTest::newRow("rings standing apart") << "apart";
        QTest::newRow("one block longer than a frame") << "long";
    }
    void aFrameIsTheSameWhereverItsRingsStand() {
        // Two panned tones over 2500 frames. The reference gets the last 2048 as one block, so
        // its frame starts at the start of its rings; the others get all 2500 in pieces, so
        // their rings wrap and the frame starts part-way through them. Both analyse that one
        // frame, once, at the same moment.
        QFETCH(QString, delivery);
        std::vector<float> audio = sine(440, 0.3, 2500, 2, 1.0, 0.4);
        const std::vector<float> high = sine(5000, 0.2, 2500, 2, 0.2, 1.0);
        for (std::size_t i = 0; i < audio.size(); ++i)
            audio[i] += high[i];
        const auto frames = [&audio](int from, int count) {
            return std::vector<float>(audio.begin() + 2 * from, audio.begin() + 2 * (from + count));
        };
        const auto planes = [](const std::vector<float>& interleaved) {
            std::vector<float> p(interleaved.size());
            const std::size_t n = interleaved.size() / 2;
            for (std::size_t i = 0; i < n; ++i) {
                p[i] = interleaved[2 * i];
                p[n + i] = interleaved[2 * i + 1];
            }
            return p;
        };

        Rig reference;
        reference.clock.set(0.05);
        reference.push(frames(452, 2048));
        reference.deliver();

        Rig rig;
        rig.clock.set(0.05);
        if (delivery == "planar") {
            const TapFormat format{rate, true, 2, true};
            for (const auto& [from, count] : {std::pair{0, 1000}, std::pair{1000, 1500}})
                rig.eq->processBlock(planes(frames(from, count)).data(), std::size_t(count),
                                     format);
        } else if (delivery == "long") {
            // 4096 frames, of which the first 1596 are silence before the same 2500.
            std::vector<float> block(2 * 1596, 0.0f);
            block.insert(block.end(), audio.begin(), audio.end());
            rig.push(block);
        } else {
            if (delivery == "apart") {
                // Mono samples of its own first: the mono ring runs ahead of the stereo ones.
                const std::vector<float> mono(100, 0.5f);
                rig.eq->processMono(mono.data(), mono.size());
            }
            rig.push(frames(0, 1000));
            rig.push(frames(1000, 1500));
        }
        rig.deliver();

        QCOMPARE(rig.levels.size(), 1);
        QCOMPARE(reference.levels.size(), 1);
        QCOMPARE(rig.curves.size(), 1);
        const LevelArray& got = rig.levels.last();
        const LevelArray& want = reference.levels.last();
        QVERIFY(*std::max_element(want.begin(), want.end()) > 0.1);
        for (int i = 0; i < AudioEQ::bandCount; ++i)
            QVERIFY2(std::abs(got[i] - want[i]) < 1e-4,
                     qPrintable(QString("band %1: %2 vs %3").arg(i).arg(got[i]).arg(want[i])));
        for (int c = 0; c < AudioEQ::stereoCols; ++c)
            QVERIFY2(std::abs(rig.curves.last()[c] - reference.curves.last()[c]) < 1e-4f,
                     qPrintable(QString("column %1").arg(c)));
    }

    // ---- the stereo field ----

    void stereoFieldPlacesTheSource_data() {
        QTest::addColumn<int>("channels");
        QTest::addColumn<double>("left");
        QTest::addColumn<double>("right");
        QTest::addColumn<int>("column");
        QTest::newRow("mono source") << 1 << 1.0 << 1.0 << 48;
        QTest::newRow("identical channels") << 2 << 1.0 << 1.0 << 48;
        QTest::newRow("left only") << 2 << 1.0 << 0.0 << 0;
        QTest::newRow("right only") << 2 << 0.0 << 1.0 << 95;
    }
    void stereoFieldPlacesTheSource() {
        QFETCH(int, channels);
        QFETCH(double, left);
        QFETCH(double, right);
        QFETCH(int, column);
        Rig rig;
        rig.clock.set(0.05);
        rig.push(sine(1000, 0.3, 2048, channels, left, right), channels);
        rig.deliver();
        QCOMPARE(rig.curves.size(), 1);
        const StereoCurve& c = rig.curves.last();
        QCOMPARE(loudestColumn(c), column);
        if (column == 48) {
            // The kernel spreads the centre to its neighbours, evenly.
            QVERIFY(c[47] > 0 && c[49] > 0);
            QVERIFY(std::abs(c[46] - c[50]) < 1e-6f);
            QCOMPARE(c[0], 0.0f);
        }
    }
};

QTEST_GUILESS_MAIN(tst_AudioEQ)
#include "tst_AudioEQ.moc"
