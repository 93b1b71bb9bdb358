// The panel window takes clicks only on the pill or the open card, on a real X server (Xvfb):
// the XShape input region is read back from the server.

#include "panel/PanelInputRegion.h"
#include "panel/SkeletonPanel.h"
#include "playback/PlayerState.h"

#include <QGuiApplication>
#include <QProcess>
#include <QQuickView>
#include <QQuickWindow>
#include <QTest>
#include <QtGui/qguiapplication_platform.h>
#include <csignal>
#include <sys/prctl.h>

#include <X11/Xlib.h>
#include <X11/extensions/shape.h>

using namespace MirlPlayer;

namespace {

QList<QRect> inputRegion(QWindow& window) {
    auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    int count = 0;
    int ordering = 0;
    XSync(x11->display(), False);
    XRectangle* rects =
        XShapeGetRectangles(x11->display(), Window(window.winId()), ShapeInput, &count, &ordering);
    QList<QRect> result;
    for (int i = 0; i < count; ++i)
        result.append(QRect(rects[i].x, rects[i].y, rects[i].width, rects[i].height));
    if (rects)
        XFree(rects);
    return result;
}

} // namespace

class tst_PanelInputRegion : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void clicksFallThroughOutsideThePillOrCard() {
        QVERIFY(qGuiApp->nativeInterface<QNativeInterface::QX11Application>());
        PlayerState player(nullptr);
        SkeletonPanel panel(player);
        QVERIFY(panel.show());
        QVERIFY(QTest::qWaitForWindowExposed(panel.window()));
        QCOMPARE(inputRegion(*panel.window()), QList<QRect>{panel.pillRect().toAlignedRect()});
        panel.pointerAt(panel.pillRect().center());
        QCOMPARE(inputRegion(*panel.window()), QList<QRect>{panel.cardRect().toAlignedRect()});
        panel.pointerAt(QPointF(5, 450));
        QCOMPARE(inputRegion(*panel.window()), QList<QRect>{panel.pillRect().toAlignedRect()});
    }

    void anEmptyRegionTakesNoClicks() {
        QQuickWindow window;
        window.resize(100, 100);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(setInputRegion(window, QRect()));
        QCOMPARE(inputRegion(window), QList<QRect>{});
        QVERIFY(setInputRegion(window, QRect(10, 20, 30, 40)));
        QCOMPARE(inputRegion(window), QList<QRect>{QRect(10, 20, 30, 40)});
    }
};

// A virtual screen of the test's own, chosen before the application object exists.
int main(int argc, char* argv[]) {
    QProcess xvfb;
    xvfb.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); }); // gone with the test
    xvfb.start(QStringLiteral("Xvfb"),
               {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                QStringLiteral("0"), QStringLiteral("1512x982x24"), QStringLiteral("-nolisten"),
                QStringLiteral("tcp")});
    if (!xvfb.waitForReadyRead(10000)) {
        qCritical("Xvfb did not start");
        return 1;
    }
    const QByteArray display = ':' + xvfb.readLine().trimmed();
    qputenv("DISPLAY", display);
    qputenv("QT_QPA_PLATFORM", "xcb");
    QQuickWindow::setDefaultAlphaBuffer(true);
    int status = 0;
    {
        QGuiApplication app(argc, argv);
        tst_PanelInputRegion test;
        status = QTest::qExec(&test, argc, argv);
    }
    xvfb.terminate();
    xvfb.waitForFinished(3000);
    return status;
}

#include "tst_PanelInputRegion.moc"
