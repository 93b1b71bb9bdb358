#include "app/AppDelegate.h"
#include "app/FactoryPreferences.h"
#include "core/FocusLog.h"
#include "core/Preferences.h"
#include "fakes/FakePlayerBridge.h"
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
    void firstRunWaitsForTheAssistant() {
        Rig rig; // no preferences and no shipped defaults
        QVERIFY(!seedFactoryPreferences(rig.prefs, QString()));
        rig.delegate.applicationDidFinishLaunching();
        QVERIFY(!rig.started());
        QCOMPARE(rig.setupShown, 1);
        QVERIFY(!rig.prefs.contains("setupCompleted"));
        rig.delegate.finishSetup();
        QVERIFY(rig.started());
    }

    void freshSeededMachineWaitsForTheAssistant() {
        Rig rig;
        QVERIFY(seedFactoryPreferences(rig.prefs, QStringLiteral(SHIPPED_DEFAULTS)));
        rig.delegate.applicationDidFinishLaunching();
        QVERIFY(!rig.started());
        QCOMPARE(rig.setupShown, 1);
    }

    void historyWithoutShowVisualizerWaits() {
        Rig rig;
        rig.prefs.setValue("matchLoudness", true);
        QVERIFY(!seedFactoryPreferences(rig.prefs, QStringLiteral(SHIPPED_DEFAULTS)));
        rig.delegate.applicationDidFinishLaunching();
        QVERIFY(!rig.started());
        QCOMPARE(rig.setupShown, 1);
    }

    void legacyInstallPlaysAndStillSeesTheAssistant() {
        Rig rig;
        rig.prefs.setValue("showVisualizer", true);
        rig.delegate.applicationDidFinishLaunching();
        QVERIFY(rig.started());
        QVERIFY(rig.prefs.boolValue("setupCompleted", false));
        QCOMPARE(rig.setupShown, 1);
    }

    void finishedSetupPlaysWithoutTheAssistant() {
        Rig rig;
        rig.prefs.setValue("setupCompleted", true);
        rig.prefs.setValue("setupAssistantFinished", true);
        rig.delegate.applicationDidFinishLaunching();
        QVERIFY(rig.started());
        QCOMPARE(rig.setupShown, 0);
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
