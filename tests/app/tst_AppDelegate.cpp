#include "app/AppDelegate.h"
#include "app/FactoryPreferences.h"
#include "core/FocusLog.h"
#include "core/Preferences.h"
#include "fakes/FakePlayerBridge.h"
#include "look/Theme.h"
#include "playback/MusicController.h"
#include "playback/PlayerState.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

class tst_AppDelegate : public QObject {
    Q_OBJECT

    struct Rig {
        QTemporaryDir dir;
        Preferences prefs{dir.filePath("p.conf")};
        FakePlayerBridge bridge;
        ManualClock clock;
        AppDelegate delegate{prefs, &bridge, clock};
        int setupShown = 0;
        int probesStopped = 0;
        bool setupOpen = false;
        Rig() {
            AppDelegate::Hooks hooks;
            hooks.showSetupWindow = [this](AppDelegate&) {
                ++setupShown;
                setupOpen = true;
            };
            hooks.setupWindowOpen = [this] { return setupOpen; };
            hooks.stopSetupProbe = [this] { ++probesStopped; };
            delegate.setHooks(hooks);
        }
        bool started() { return delegate.player().controller() != nullptr; }
    };

private Q_SLOTS:
    void theLaunchWaitsForTheAssistantUnlessSetUpBefore_data() {
        QTest::addColumn<QStringList>("stored"); // keys stored as true before the launch
        QTest::addColumn<bool>("shipped");       // the shipped defaults are there to seed
        QTest::addColumn<bool>("starts");
        QTest::addColumn<int>("assistant");
        QTest::newRow("first run, nothing shipped") << QStringList{} << false << false << 1;
        QTest::newRow("fresh machine, seeded") << QStringList{} << true << false << 1;
        QTest::newRow("history without showVisualizer")
            << QStringList{"matchLoudness"} << true << false << 1;
        QTest::newRow("older install plays, still sees the assistant")
            << QStringList{"showVisualizer"} << true << true << 1;
        QTest::newRow("marked set up before there was an assistant")
            << QStringList{"setupCompleted"} << true << true << 1;
        QTest::newRow("set up") << QStringList{"setupCompleted", "setupAssistantFinished"} << true
                                << true << 0;
    }
    void theLaunchWaitsForTheAssistantUnlessSetUpBefore() {
        QFETCH(QStringList, stored);
        QFETCH(bool, shipped);
        QFETCH(bool, starts);
        QFETCH(int, assistant);
        Rig rig;
        for (const QString& key : stored)
            rig.prefs.setValue(key, true);
        seedFactoryPreferences(rig.prefs, shipped ? QStringLiteral(SHIPPED_DEFAULTS) : QString());
        rig.delegate.applicationDidFinishLaunching();
        QCOMPARE(rig.started(), starts);
        QCOMPARE(rig.setupShown, assistant);
        QCOMPARE(rig.prefs.boolValue("setupCompleted", false), starts);
        rig.delegate.finishSetup(false);
        QVERIFY(rig.started());
        QVERIFY(rig.prefs.boolValue("setupAssistantFinished", false));
    }

    void coverColoursReachTheAccentAndTheTheme() {
        Rig rig;
        rig.delegate.finishSetup(false);
        QImage cover(64, 64, QImage::Format_RGB32);
        cover.fill(QColor(200, 30, 40));
        const QString path = rig.dir.filePath("cover.png");
        QVERIFY(cover.save(path));
        Snapshot s = track(Source::music, "Red", true);
        s.artURL = QUrl::fromLocalFile(path).toString();
        rig.bridge.setSnapshot(s);
        rig.delegate.player().controller()->merge(Snapshot::empty(Source::spotify), s,
                                                  rig.clock.now());
        QTRY_VERIFY(Theme::shared().lastArtwork().has_value());
        const QColor accent = rig.delegate.player().accent();
        // The palette lifts dark colours, so compare the hue: red.
        const double hue = accent.hsvHueF();
        QVERIFY2((hue < 0.05 || hue > 0.95) && accent.hsvSaturationF() > 0.4,
                 qPrintable(accent.name()));

        // A track without a cover clears the palette again.
        const Snapshot plain = track(Source::music, "Plain", true);
        rig.bridge.setSnapshot(plain);
        rig.delegate.player().controller()->merge(Snapshot::empty(Source::spotify), plain,
                                                  rig.clock.now() + 1);
        QTRY_VERIFY(!Theme::shared().lastArtwork().has_value());
        QCOMPARE(rig.delegate.player().accent(), QColor(Qt::white));
    }

    void quittingLogsAndStopsTheSetupProbe() {
        Rig rig;
        rig.delegate.applicationDidFinishLaunching();
        QVERIFY(rig.setupOpen);
        rig.delegate.applicationWillTerminate();
        QCOMPARE(rig.probesStopped, 1);
        QFile log(FocusLog::shared().path());
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().endsWith(" MIRL PRO quitting normally\n"));
    }
};

QTEST_MAIN(tst_AppDelegate)
#include "tst_AppDelegate.moc"
