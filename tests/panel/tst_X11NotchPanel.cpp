// The panel on a real X server: pointer driven by xdotool, windows of "other applications" made
// with Xlib, the state read back from the session bus.
#include "X11TestMain.h"
#include "panel/logic/NotchPanelController.h"
#include "platform/linux/x11/X11NotchPanel.h"
#include "platform/linux/x11/X11Pointer.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/X11WindowFacts.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QProcess>
#include <QRasterWindow>
#include <QTest>
#include <memory>

using namespace MirlPlayer;

namespace {

// A window that paints itself and counts the left presses it receives.
class PressCounter : public QRasterWindow {
public:
    int presses = 0;
    int rightPresses = 0;
    QPoint lastPress;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter(this).fillRect(QRect(QPoint(), size()), Qt::darkGray);
    }
    void mousePressEvent(QMouseEvent* e) override {
        if (e->button() == Qt::RightButton) {
            ++rightPresses;
            return;
        }
        ++presses;
        lastPress = e->position().toPoint();
    }
};

void pointerTo(int x, int y) {
    QProcess::execute(QStringLiteral("xdotool"),
                      {QStringLiteral("mousemove"), QString::number(x), QString::number(y)});
}

void click() {
    QProcess::execute(QStringLiteral("xdotool"), {QStringLiteral("click"), QStringLiteral("1")});
}

struct Signals : QObject {
    Q_OBJECT
public:
    QList<QPair<qint64, QVariantMap>> seen;
    QElapsedTimer clock;
    Signals() { clock.start(); }
    bool sawExpanded(const QString& value, qint64 since) const {
        for (const auto& [t, info] : seen) {
            if (t >= since && info.value(QStringLiteral("expanded")).toString() == value)
                return true;
        }
        return false;
    }
    qint64 firstExpanded(const QString& value, qint64 since) const {
        for (const auto& [t, info] : seen) {
            if (t >= since && info.value(QStringLiteral("expanded")).toString() == value)
                return t;
        }
        return -1;
    }
public Q_SLOTS:
    void mirlState(const QVariantMap& info) { seen.append({clock.elapsed(), info}); }
};

} // namespace

class tst_X11NotchPanel : public QObject {
    Q_OBJECT
    std::unique_ptr<PressCounter> m_beneath;
    std::unique_ptr<PressCounter> m_window;
    std::unique_ptr<X11NotchPanel> m_panel;
    std::unique_ptr<QtScreenInfo> m_screens;
    std::unique_ptr<X11Pointer> m_pointer;
    std::unique_ptr<X11WindowFacts> m_windows;
    std::unique_ptr<NotchPanelController> m_controller;
    Signals m_signals;
    QStringList m_logs;

    NotchLayout* layout() { return m_controller->layout(); }
    void settle() { QTest::qWait(200); }
    bool openCard() {
        pointerTo(756, 52);
        return QTest::qWaitFor([&] { return m_controller->stage() == Stage::open; }, 2000);
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(QDBusConnection::sessionBus().connect(
            QString(), MirlStateSignal::path, MirlStateSignal::interface, MirlStateSignal::member,
            &m_signals, SLOT(mirlState(QVariantMap))));

        // Something beneath the panel, as the menu bar or a browser would be.
        m_beneath = std::make_unique<PressCounter>();
        m_beneath->setFlags(Qt::Window | Qt::FramelessWindowHint);
        m_beneath->setGeometry(0, 0, 1512, 800);
        m_beneath->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_beneath.get()));

        m_window = std::make_unique<PressCounter>();
        X11NotchPanel::configure(m_window.get());
        m_panel = std::make_unique<X11NotchPanel>(m_window.get());
        m_screens = std::make_unique<QtScreenInfo>();
        m_pointer = std::make_unique<X11Pointer>();
        m_windows = std::make_unique<X11WindowFacts>();
        QVERIFY(m_windows->connected());

        NotchPanelController::Outputs out;
        out.logLine = [this](const QString& l) { m_logs << l; };
        m_controller =
            std::make_unique<NotchPanelController>(Clock::system(), *m_screens, *m_pointer,
                                                   *m_windows, NotchPanelController::Inputs{}, out);
        m_controller->setForceExpanded(false);
        pointerTo(100, 900);
        m_controller->start(m_panel.get());
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QCOMPARE(m_window->geometry(), QRect(0, 0, 1512, 498));
        settle();
        QCOMPARE(m_panel->inputRegion(), QRect()); // click-through at rest
    }

    void aClickOnTheRestingPanelReachesTheWindowBeneath() {
        const int before = m_beneath->presses;
        pointerTo(756, 60); // on the resting pill itself
        click();
        QTRY_COMPARE(m_beneath->presses, before + 1);
        QCOMPARE(m_beneath->lastPress, QPoint(756, 60));
        QCOMPARE(m_window->presses, 0);
        pointerTo(100, 900);
        settle();
    }

    void restingLongerOpensTheCard() {
        const qint64 since = m_signals.clock.elapsed();
        pointerTo(756, 52);
        QTRY_VERIFY_WITH_TIMEOUT(m_signals.sawExpanded(QStringLiteral("1"), since), 2000);
        const qint64 openedAfter = m_signals.firstExpanded(QStringLiteral("1"), since) - since;
        qInfo("card opened %lld ms after the pointer arrived", openedAfter);
        QVERIFY(openedAfter >= 220);
        QCOMPARE(m_controller->stage(), Stage::open);
        // Only the card (grown by 6) takes clicks now: x 460..1052, 38 - 6 down from the top.
        QTRY_COMPARE(m_panel->inputRegion(), QRect(460, 32, 592, 180));
    }

    void onlyTheCardTakesClicks() {
        const int beneath = m_beneath->presses;
        pointerTo(756, 100); // on the card
        click();
        QTRY_COMPARE(m_window->presses, 1);
        QCOMPARE(m_beneath->presses, beneath);
        pointerTo(200, 300); // inside the panel window, outside the card
        click();
        QTRY_COMPARE(m_beneath->presses, beneath + 1);
        QCOMPARE(m_window->presses, 1);
    }

    void aRightPressOnTheCardOpensTheContextMenuInstead() {
        QList<QPoint> menus;
        m_panel->onContextMenu = [&](QPoint at) {
            menus << at;
            return true;
        };
        QVERIFY(openCard());
        pointerTo(756, 100);
        QTest::qWait(100); // the card takes clicks once a tick has seen the pointer on it
        QProcess::execute(QStringLiteral("xdotool"),
                          {QStringLiteral("click"), QStringLiteral("3")});
        QTRY_COMPARE(menus.size(), 1);
        QCOMPARE(menus.first(), QPoint(756, 100));
        QCOMPARE(m_window->rightPresses, 0);
        m_panel->onContextMenu = {};
    }

    void aPressOnTheLibrarysTextFieldTakesTheKeyboard() {
        QVERIFY(openCard());
        m_controller->setLibraryOpen(true);
        QVERIFY(m_panel->libraryAcceptsKeyboard);
        m_panel->editableTextAt = [](QPointF p) { return p.y() < 100; };
        pointerTo(756, 60);
        QTest::qWait(100);
        click();
        QTRY_VERIFY(m_panel->textFocusRequested);
        QTRY_VERIFY(m_window->isActive());
        pointerTo(756, 300);
        QTest::qWait(100);
        click();
        QTRY_VERIFY(!m_panel->textFocusRequested);
        QTRY_VERIFY(!m_window->isActive());
        m_controller->setLibraryOpen(false);
        QVERIFY(!m_panel->libraryAcceptsKeyboard);
        m_panel->editableTextAt = {};
    }

    void theDimmingFadesAndTurnsBackFromWhereItIs() {
        m_panel->animateAlpha(0.35, 1.0);
        QTest::qWait(200);
        const double midway = m_window->opacity();
        QVERIFY2(midway < 1 && midway > 0.35, qPrintable(QString::number(midway)));
        m_panel->animateAlpha(1, 0.2); // woken mid-fade: no jump
        QCOMPARE(m_window->opacity(), midway);
        QTRY_COMPARE(m_window->opacity(), 1.0);
    }

    void cleanupTestCase() {
        m_controller.reset();
        m_panel.reset();
    }
};

MIRL_X11_TEST_MAIN(tst_X11NotchPanel)

#include "tst_X11NotchPanel.moc"
