#include "audio/AudioEQ.h"
#include "audio/Spectrum.h"

#include <QTest>
#include <cmath>
#include <complex>
#include <random>

using namespace MirlPlayer;

class tst_Spectrum : public QObject {
    Q_OBJECT
private Q_SLOTS:

    void aCentredSineShowsTheMainLobeOfTheWindow() {
        // A sine that falls exactly on bin 100: the window leaves it at its scale, spreads half
        // of that to each neighbour, and nothing further out.
        Spectrum spectrum(2048);
        std::vector<float> frame(2048);
        for (int n = 0; n < 2048; ++n)
            frame[size_t(n)] = float(std::sin(2 * M_PI * 100.0 * n / 2048));
        const auto mags = spectrum.magnitudes(frame);
        QVERIFY(std::abs(mags[100] - 0.8165f) < 1e-5f);
        QVERIFY(std::abs(mags[99] - 0.8165f / 2) < 1e-5f);
        QVERIFY(std::abs(mags[101] - 0.8165f / 2) < 1e-5f);
        for (int k = 1; k < 1024; ++k) {
            if (k < 99 || k > 101)
                QVERIFY2(mags[size_t(k)] < 1e-5f, qPrintable(QString::number(k)));
        }
    }

    void magnitudesMatchAPlainFourierTransform_data() {
        QTest::addColumn<int>("size");
        QTest::addColumn<unsigned>("seed");
        QTest::newRow("2048 noise a") << 2048 << 1u;
        QTest::newRow("2048 noise b") << 2048 << 2u;
        QTest::newRow("2048 noise c") << 2048 << 3u;
        QTest::newRow("256 noise") << 256 << 4u;
    }
    void magnitudesMatchAPlainFourierTransform() {
        QFETCH(int, size);
        QFETCH(unsigned, seed);
        Spectrum spectrum(size);
        std::mt19937 rng(seed);
        std::uniform_real_distribution<float> dist(-1.0f, 1.0f);
        std::vector<float> frame(static_cast<size_t>(size));
        for (float& x : frame)
            x = dist(rng);
        const std::vector<float> mags = spectrum.magnitudes(frame);
        QCOMPARE(int(mags.size()), size / 2);

        // The reference in double precision, over the same windowed frame.
        std::vector<double> reference(static_cast<size_t>(size / 2));
        double sumSquares = 0;
        for (int k = 1; k < size / 2; ++k) {
            std::complex<double> X = 0;
            for (int n = 0; n < size; ++n) {
                const double w = 0.8165 * (1.0 - std::cos(2.0 * M_PI * n / size));
                X += w * frame[size_t(n)] * std::polar(1.0, -2.0 * M_PI * k * n / size);
            }
            reference[size_t(k)] = 2.0 * std::abs(X) / size;
            sumSquares += reference[size_t(k)] * reference[size_t(k)];
        }
        // Relative to each bin, with the typical bin size as the floor for the rare bin that
        // happens to land near zero.
        const double typical = std::sqrt(sumSquares / (size / 2 - 1));
        for (int k = 1; k < size / 2; ++k) {
            const double ref = reference[size_t(k)];
            const double err = std::abs(mags[size_t(k)] - ref);
            QVERIFY2(err <= 1e-4 * std::max(ref, typical),
                     qPrintable(QString("bin %1: %2 vs %3").arg(k).arg(mags[size_t(k)]).arg(ref)));
        }
    }

    void aSinePeaksInTheBandThatHoldsItsFrequency_data() {
        QTest::addColumn<double>("frequency");
        QTest::addColumn<double>("rate");
        QTest::newRow("1 kHz at 48 kHz") << 1000.0 << 48000.0;
        QTest::newRow("100 Hz at 48 kHz") << 100.0 << 48000.0;
        QTest::newRow("10 kHz at 48 kHz") << 10000.0 << 48000.0;
        QTest::newRow("1 kHz at 44.1 kHz") << 1000.0 << 44100.0;
        QTest::newRow("3 kHz at 8 kHz") << 3000.0 << 8000.0;
    }
    void aSinePeaksInTheBandThatHoldsItsFrequency() {
        QFETCH(double, frequency);
        QFETCH(double, rate);
        Spectrum spectrum(2048);
        std::vector<float> frame(2048);
        for (int n = 0; n < 2048; ++n)
            frame[size_t(n)] = float(0.1 * std::sin(2 * M_PI * frequency * n / rate));
        const auto mags = spectrum.magnitudes(frame);
        EQTuning flat;
        flat.tilt = 0; // so the neighbours of the peak cannot win by tilt alone
        const auto levels = AudioEQ::bandLevels(mags.data(), 1024, 128, rate, flat);
        const int loudest = int(std::max_element(levels.begin(), levels.end()) - levels.begin());

        const double nyquist = rate / 2;
        const double lowest = std::min(nyquist / 4, 40.0);
        const double ratio = std::min(nyquist, 16000.0) / lowest;
        const double f0 = lowest * std::pow(ratio, loudest / 128.0);
        const double f1 = lowest * std::pow(ratio, (loudest + 1) / 128.0);
        // Bands are peaks over whole bins: the band may reach half a bin beyond its edges.
        const double bin = nyquist / 1024;
        QVERIFY2(f0 - bin <= frequency && frequency < f1 + bin,
                 qPrintable(QString("band %1 covers %2...%3 Hz").arg(loudest).arg(f0).arg(f1)));
    }
};

QTEST_APPLESS_MAIN(tst_Spectrum)
#include "tst_Spectrum.moc"
