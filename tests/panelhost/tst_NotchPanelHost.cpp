// The application's panel on a private X server: the Qt Quick view driven by the controller.
#include "X11TestSession.h"
#include "panel/host/NotchPanelHost.h"
#include "playback/PlayerState.h"

#include <QGuiApplication>
#include <QProcess>
#include <QQuickView>
#include <QQuickWindow>
#include <QTest>

using namespace MirlPlayer;

namespace {
void pointerTo(int x, int y) {
    QProcess::execute(QStringLiteral("xdotool"),
                      {QStringLiteral("mousemove"), QString::number(x), QString::number(y)});
}
} // namespace

class tst_NotchPanelHost : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theViewFollowsTheStagesAndTheirShape() {
        PlayerState player(nullptr);
        NotchPanelController::Inputs in;
        in.showVisualizer = [] { return false; };
        QList<MirlState> states;
        NotchPanelController::Outputs out;
        out.broadcast = [&](const MirlState& s) { states << s; };
        pointerTo(100, 900);
        NotchPanelHost host(player, in, out);
        QVERIFY(host.show());
        QVERIFY(QTest::qWaitForWindowExposed(host.window()));
        QCOMPARE(host.window()->geometry(), QRect(0, 0, 1512, 498));
        QCOMPARE(host.shape(), QRectF(723, 38, 66, 24));
        QCOMPARE(host.panel()->inputRegion(), QRect());

        pointerTo(756, 52);
        QTRY_VERIFY_WITH_TIMEOUT(host.expanded(), 2000);
        QCOMPARE(host.panel()->level(), 3);
        // The drawn shape moves with the spring and settles on the artwork card.
        QTRY_COMPARE_WITH_TIMEOUT(host.shape(), QRectF(632, 38, 248, 336), 3000);
        QCOMPARE(states.last(), (MirlState{true, 632, 608, 248, 336}));

        pointerTo(100, 900);
        QTRY_VERIFY_WITH_TIMEOUT(!host.expanded(), 2000);
        QTRY_COMPARE_WITH_TIMEOUT(host.shape(), QRectF(723, 38, 66, 24), 3000);
        QCOMPARE(host.panel()->level(), 27);
    }
};

int main(int argc, char** argv) {
    MirlPlayer::Test::X11TestSession session;
    if (!session.ok()) {
        qWarning("no private X server: %s", qPrintable(session.error()));
        return 1;
    }
    QQuickWindow::setDefaultAlphaBuffer(true);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);
    QGuiApplication app(argc, argv);
    tst_NotchPanelHost test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_NotchPanelHost.moc"
