#include "look/LookTypes.h"
#include "settings/SettingsModel.h"
#include "settings/SettingsPage.h"
#include "settings/SettingsWindow.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QTest>

using namespace MirlPlayer;

// The real window, offscreen: every page loads without a complaint from QML, and typing a
// search and pressing Return lands on the setting.
class tst_SettingsWindow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void everyPageLoadsCleanly();
    void returnTakesTheFirstResultIntoView();

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

void tst_SettingsWindow::returnTakesTheFirstResultIntoView() {
    QQuickWindow* window = m_settings->window();
    m_settings->model()->setSelection(int(SettingsPage::appearance));
    auto* field = window->findChild<QQuickItem*>(QStringLiteral("searchField"));
    QVERIFY(field);
    field->forceActiveFocus();
    for (QChar c : QStringLiteral("smoothing"))
        QTest::keyClick(window, c.toLatin1());
    QTRY_VERIFY(m_settings->model()->searching());
    QTest::keyClick(window, Qt::Key_Return);

    QCOMPARE(m_settings->model()->selection(), int(SettingsPage::visualizer));
    QVERIFY(m_settings->model()->fineTuning());
    auto* viewport = window->findChild<QQuickItem*>(QStringLiteral("settingsViewport"));
    // The "Movement" heading lies far down the page: the page scrolls it near the top.
    QTRY_VERIFY(viewport->property("contentY").toDouble() > 100);
}

QTEST_MAIN(tst_SettingsWindow)
#include "tst_SettingsWindow.moc"
