#include "StatusTray.h"
#include "app/AppDelegate.h"
#include "app/StatusItem.h"
#include "app/StatusMenu.h"
#include "core/Preferences.h"
#include "fakes/FakePlayerBridge.h"
#include "panel/X11TestMain.h"

#include <QApplication>
#include <QMenu>
#include <QTemporaryDir>

using namespace MirlPlayer;
using MirlTest::TrayWatcher;

Q_DECLARE_METATYPE(std::function<void()>)

// The status item in a desktop session of the test's own (private X server and session bus),
// with a tray watcher played by the test: whether the item can be seen, and its menu as the
// tray reads it over the bus.
class tst_StatusItem : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    Preferences m_prefs{m_dir.filePath(QStringLiteral("p.conf"))};
    FakePlayerBridge m_bridge;
    AppDelegate m_delegate{m_prefs, &m_bridge};
    Updater m_updater{m_prefs};
    QStringList m_settingsAsked; // the page of each request to open Settings
    QDBusConnection m_panel =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("tray-panel"));
    std::unique_ptr<TrayWatcher> m_watcher;
    std::unique_ptr<StatusItem> m_item;

    // The item, shown to a watcher with a host, and its menu as the tray reads it.
    MirlTest::TrayMenu trayMenu() {
        if (!m_item) {
            m_watcher = std::make_unique<TrayWatcher>(m_panel, true);
            m_item = std::make_unique<StatusItem>([this] {
                return buildStatusMenu(
                    m_delegate, [] {}, m_updater);
            });
        }
        if (!QTest::qWaitFor([this] { return !m_watcher->items().isEmpty(); }, 5000))
            return {};
        return MirlTest::readTrayMenu(m_panel, m_watcher->items().constFirst());
    }

private Q_SLOTS:
    void initTestCase() {
        AppDelegate::Hooks hooks;
        hooks.openSettings = [this](const QString& page) { m_settingsAsked << page; };
        m_delegate.setHooks(hooks);
    }

    void visibilityFollowsTheWatcherAndItsHost() {
        StatusItemVisibility visibility(m_panel);
        QTest::qWait(200);
        QVERIFY(!visibility.visible()); // no watcher at all

        auto watcher = std::make_unique<TrayWatcher>(m_panel, false);
        QTest::qWait(200);
        QVERIFY(!visibility.visible()); // a watcher with no host draws nothing
        watcher->setHost(true);
        QTRY_VERIFY(visibility.visible());
        watcher.reset();
        QTRY_VERIFY(!visibility.visible());
    }

    void theTrayReadsTheMenuRows_data() {
        QTest::addColumn<std::function<void()>>("before");
        QTest::addColumn<QStringList>("rows");
        const QStringList rows{QStringLiteral("MIRL PRO ") + Updater::versionText() + " (disabled)",
                               "---",
                               "Settings… [Control+,]",
                               "Setup Assistant…",
                               "Reposition on Notch [Control+R]",
                               "---",
                               "Report a Problem…",
                               "Share an Idea…",
                               "---",
                               "Quit [Control+Q]"};
        const auto withUpdateRow = [rows](const QString& row) {
            QStringList out = rows;
            out.insert(5, row);
            return out;
        };
        QTest::newRow("a build without updates") << std::function<void()>() << rows;
        QTest::newRow("updates set up") << std::function<void()>([this] {
            m_prefs.setValue(QStringLiteral("automaticallyChecksForUpdates"), false);
            UpdateConfig config;
            config.feedURL = QUrl(QStringLiteral("https://updates.invalid/appcast.xml"));
            config.publicKey = QByteArray(32, 1);
            m_updater.start(config);
            m_item->rebuild();
        }) << withUpdateRow(QStringLiteral("Check for Updates…"));
        QTest::newRow("an update waits") << std::function<void()>([this] {
            AppcastItem update;
            update.version = QStringLiteral("0.2.0");
            m_updater.willHandleShowingUpdate(false, update, false);
            m_item->rebuild();
        }) << withUpdateRow(QStringLiteral("Update to 0.2.0…"));
    }
    void theTrayReadsTheMenuRows() {
        QFETCH(std::function<void()>, before);
        QFETCH(QStringList, rows);
        if (before)
            before();
        QTRY_COMPARE(trayMenu().texts(), rows);
    }

    void choosingSettingsInTheTrayOpensIt() {
        const MirlTest::TrayMenu menu = trayMenu();
        const qsizetype settings = menu.texts().indexOf(QStringLiteral("Settings… [Control+,]"));
        QVERIFY(settings >= 0);
        MirlTest::clickTrayMenuRow(m_panel, menu, menu.rows.at(settings).id);
        QTRY_COMPARE(m_settingsAsked, QStringList{QString()});
    }
};

MIRL_X11_TEST_MAIN(tst_StatusItem, QApplication)

#include "tst_StatusItem.moc"
