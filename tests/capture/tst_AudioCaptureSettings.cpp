// The audio page's model: consent with its first-start rule, the status feed and the status row.
#include "audio/AudioCaptureSettings.h"
#include "core/Preferences.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

class tst_AudioCaptureSettings : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString prefsPath() const { return m_dir.filePath(QStringLiteral("prefs.conf")); }

private Q_SLOTS:
    void cleanup() { QFile::remove(prefsPath()); }

    void consentAtFirstStartFollowsEarlierUseOfTheVisualizer_data() {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QVariant>("showVisualizer");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("fresh install") << QVariant() << QVariant() << false;
        QTest::newRow("visualizer used, on") << QVariant() << QVariant(true) << true;
        QTest::newRow("visualizer used, off") << QVariant() << QVariant(false) << true;
        QTest::newRow("stored off wins") << QVariant(false) << QVariant(true) << false;
        QTest::newRow("stored on wins") << QVariant(true) << QVariant() << true;
        QTest::newRow("unreadable stored value falls back")
            << QVariant(QStringLiteral("perhaps")) << QVariant() << false;
    }
    void consentAtFirstStartFollowsEarlierUseOfTheVisualizer() {
        QFETCH(QVariant, stored);
        QFETCH(QVariant, showVisualizer);
        QFETCH(bool, enabled);
        Preferences prefs(prefsPath());
        if (stored.isValid())
            prefs.setValue(AudioCaptureSettings::enabledKey, stored);
        if (showVisualizer.isValid())
            prefs.setValue(QStringLiteral("showVisualizer"), showVisualizer);
        AudioCaptureSettings settings(prefs);
        QCOMPARE(settings.enabled(), enabled);
        QCOMPARE(settings.status(), QStringLiteral("Play a song to check audio capture."));
        QVERIFY(!settings.needsAttention());
    }

    void eachReportCarriesItsOwnErrorFlag() {
        Preferences prefs(prefsPath());
        AudioCaptureSettings settings(prefs);
        QSignalSpy attention(&settings, &AudioCaptureSettings::needsAttentionChanged);
        settings.setStatus(QStringLiteral("No audio detected."), true);
        QVERIFY(settings.needsAttention());
        settings.setStatus(QStringLiteral("Receiving audio from Spotify"), false);
        QVERIFY(!settings.needsAttention());
        QCOMPARE(settings.status(), QStringLiteral("Receiving audio from Spotify"));
        QCOMPARE(attention.count(), 2);
    }

    void statusRowShowsWhatMatters_data() {
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<bool>("needs");
        QTest::addColumn<bool>("error");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("symbol");
        QTest::addColumn<QString>("button");
        const QString failure = QStringLiteral("Couldn’t start audio capture.");
        QTest::newRow("off hides an old error") << false << true << true << "Music access is off"
                                                << "waveform" << QString();
        QTest::newRow("nothing needs audio")
            << true << false << false << "Visualizer is off, music access is idle"
            << "waveform"
            << "Turn On Visualizer";
        QTest::newRow("error") << true << true << true << failure << "exclamationmark.circle"
                               << "Try Again";
        QTest::newRow("fine") << true << true << false << failure << "waveform" << QString();
    }
    void statusRowShowsWhatMatters() {
        QFETCH(bool, enabled);
        QFETCH(bool, needs);
        QFETCH(bool, error);
        QFETCH(QString, text);
        QFETCH(QString, symbol);
        QFETCH(QString, button);
        Preferences prefs(prefsPath());
        AudioCaptureSettings settings(prefs);
        settings.setEnabled(enabled);
        settings.setStatus(QStringLiteral("Couldn’t start audio capture."), error);
        QCOMPARE(settings.row(needs), (AudioCaptureSettings::Row{text, symbol, button}));
    }
};

QTEST_GUILESS_MAIN(tst_AudioCaptureSettings)
#include "tst_AudioCaptureSettings.moc"
