// The settings window beside the real panel on a private X server, used with the pointer and
// keyboard through xdotool: a look control redraws the panel while the user watches, requests
// switch pages, and a search typed into the field takes the user to the setting.
#include "X11TestMain.h"
#include "look/LookTypes.h"
#include "look/ReduceTransparency.h"
#include "look/Theme.h"
#include "panel/host/NotchPanelHost.h"
#include "playback/PlayerState.h"
#include "settings/SettingsModel.h"
#include "settings/SettingsPage.h"
#include "settings/SettingsWindow.h"

#include <QApplication>
#include <QProcess>
#include <QQuickItem>
#include <QRegularExpression>
#include <QScreen>
#include <QTest>

using namespace MirlPlayer;

namespace {

void xdotool(const QStringList& args) {
    QProcess::execute(QStringLiteral("xdotool"), args);
}

void clickAt(QQuickItem* item) {
    const QPointF at = item->mapToGlobal(QPointF(item->width() / 2, item->height() / 2));
    xdotool({QStringLiteral("mousemove"), QString::number(qRound(at.x())),
             QString::number(qRound(at.y())), QStringLiteral("click"), QStringLiteral("1")});
}

// The visible item that shows `text`: a button by its text, a switch by its row's label.
QQuickItem* control(QQuickItem* item, const QString& text) {
    if (!item->isVisible())
        return nullptr;
    const QList<QQuickItem*> parts = item->childItems();
    if (item->property("label").toString() == text && !parts.isEmpty())
        return parts.last(); // the switch beside the texts
    if (item->inherits("QQuickAbstractButton") && item->property("text").toString() == text)
        return item;
    for (QQuickItem* part : parts)
        if (QQuickItem* found = control(part, text))
            return found;
    return nullptr;
}

} // namespace

class tst_SettingsOnScreen : public QObject {
    Q_OBJECT
    std::unique_ptr<PlayerState> m_player;
    std::unique_ptr<NotchPanelHost> m_panel;
    std::unique_ptr<SettingsWindow> m_settings;

    // The open card, as the screen shows it.
    QImage card() {
        QTest::qWait(300); // the frames that follow a change
        return QGuiApplication::primaryScreen()->grabWindow(0, 632, 38, 248, 336).toImage();
    }

private Q_SLOTS:
    void initTestCase() {
        QQuickWindow::setDefaultAlphaBuffer(true); // before the first window
        QTest::failOnWarning(QRegularExpression(QStringLiteral("MirlPlayer/Settings")));
        registerLookTypes();
        Theme::shared().setBackgroundStyleID(QStringLiteral("solid"));
        Theme::shared().setShowVisualizer(false);
        Theme::shared().setStyleID(QStringLiteral("retro"));
        ReduceTransparency::shared().setOwnSetting(false); // as a run before may have left it
        m_player = std::make_unique<PlayerState>(nullptr);
        NotchPanelController::Outputs out;
        out.broadcast = [](const MirlState&) {};
        NotchPanelController::Inputs in;
        in.showVisualizer = [] { return false; };
        m_panel = std::make_unique<NotchPanelHost>(*m_player, in, out);
        m_panel->controller().setForceExpanded(true);
        QVERIFY(m_panel->show());
        m_settings = std::make_unique<SettingsWindow>(QStringLiteral("0.1.0 (?)"));
        m_settings->open();
        QVERIFY(QTest::qWaitForWindowExposed(m_settings->window()));
        // Below the card, so that nothing of the window shows through its glass.
        m_settings->window()->setPosition(0, 400);
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->shape(), QRectF(632, 38, 248, 336), 3000);
        QTest::qWait(300); // the window's move, which no window manager confirms
    }

    void aLookControlRedrawsThePanel_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("background"); // the one in force afterwards
        QTest::newRow("glass") << "Frosted glass"
                               << "frosted";
        QTest::newRow("reduce transparency") << "Reduce transparency"
                                             << "solid";
        QTest::newRow("control style") << "Neon Noir"
                                       << "solid";
    }
    void aLookControlRedrawsThePanel() {
        QFETCH(QString, control);
        QFETCH(QString, background);
        QQuickItem* item = ::control(m_settings->window()->contentItem(), control);
        QVERIFY(item);
        const QImage before = card();
        clickAt(item);
        QTRY_COMPARE(Theme::shared().effectiveBackgroundID(), background);
        QVERIFY(card() != before);
    }

    // Every page loads without a complaint from QML, at its top; a request naming a page switches
    // the open window to it, any other request leaves the page as it is.
    void requestsSwitchToANamedPageOnly() {
        auto* viewport = m_settings->window()->findChild<QQuickItem*>("settingsViewport");
        for (const QString page : {"Visualizer", "Audio", "Updates & Feedback", "Spotify"}) {
            m_settings->open(page);
            QTest::qWait(50);
            QCOMPARE(m_settings->model()->headerTitle(), page);
            QCOMPARE(viewport->property("contentY").toDouble(), 0.0);
        }
        m_settings->open(QStringLiteral("Nonsense"));
        m_settings->open();
        QCOMPARE(m_settings->model()->selection(), int(SettingsPage::spotify));
        m_settings->open(QStringLiteral("Appearance"));
    }

    void aSearchTypedIntoTheFieldTakesTheUserToTheSetting() {
        QQuickWindow* window = m_settings->window();
        QVERIFY(m_settings->model()->selection() == int(SettingsPage::appearance));
        clickAt(window->findChild<QQuickItem*>(QStringLiteral("searchField")));
        xdotool({QStringLiteral("type"), QStringLiteral("smoothing")});
        QTRY_VERIFY(m_settings->model()->searching());
        xdotool({QStringLiteral("key"), QStringLiteral("Return")});
        QTRY_COMPARE(m_settings->model()->selection(), int(SettingsPage::visualizer));

        // The "Movement" heading lies far down the page; it comes to rest near the top.
        auto* viewport = window->findChild<QQuickItem*>(QStringLiteral("settingsViewport"));
        QQuickItem* movement = nullptr;
        for (QQuickItem* item : viewport->findChildren<QQuickItem*>())
            if (item->property("settingsAnchor").toString() == u"response")
                movement = item;
        QVERIFY(movement);
        const auto top = [&] { return movement->mapToItem(viewport, QPointF()).y(); };
        QTRY_VERIFY2(top() >= 0 && top() < viewport->height() * 0.3,
                     qPrintable(QString::number(top())));
    }
};

MIRL_X11_TEST_MAIN(tst_SettingsOnScreen, QApplication)

#include "tst_SettingsOnScreen.moc"
