#include "look/LookTypes.h"
#include "settings/SettingsModel.h"
#include "settings/SettingsPage.h"
#include "settings/SettingsWindow.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QTest>

using namespace MirlPlayer;

// The real window, offscreen: every page loads without a complaint from QML, and a request
// that names a page switches the open window to it.
class tst_SettingsWindow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void everyPageLoadsCleanly();
    void askingAgainSwitchesToANamedPageOnly();

private:
    std::unique_ptr<SettingsWindow> m_settings;
};

void tst_SettingsWindow::initTestCase() {
    QTest::failOnWarning(QRegularExpression(QStringLiteral("MirlPlayer/Settings")));
    registerLookTypes();
    m_settings = std::make_unique<SettingsWindow>(QStringLiteral("0.1.0 (?)"));
    m_settings->open();
    QVERIFY(m_settings->window());
    QVERIFY(QTest::qWaitForWindowExposed(m_settings->window()));
}

void tst_SettingsWindow::everyPageLoadsCleanly() {
    for (SettingsPage page : SettingsPages::all()) {
        m_settings->model()->setSelection(int(page));
        QTest::qWait(50);
        QCOMPARE(m_settings->window()
                     ->findChild<QQuickItem*>(QStringLiteral("settingsViewport"))
                     ->property("contentY")
                     .toDouble(),
                 0.0);
    }
}

void tst_SettingsWindow::askingAgainSwitchesToANamedPageOnly() {
    m_settings->model()->setSearch(QStringLiteral("glass"));
    m_settings->open(QStringLiteral("Spotify"));
    QCOMPARE(m_settings->model()->selection(), int(SettingsPage::spotify));
    QVERIFY(!m_settings->model()->searching());
    m_settings->open(QStringLiteral("Nonsense"));
    m_settings->open();
    QCOMPARE(m_settings->model()->selection(), int(SettingsPage::spotify));
}

QTEST_MAIN(tst_SettingsWindow)
#include "tst_SettingsWindow.moc"
