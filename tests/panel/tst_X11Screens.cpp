// Screens and the pointer of a real X server, in the panel's bottom-left screen points.
#include "X11TestMain.h"
#include "platform/linux/x11/X11Pointer.h"
#include "platform/linux/x11/X11Screens.h"

#include <QGuiApplication>
#include <QProcess>
#include <QTest>

using namespace MirlPlayer;

class tst_X11Screens : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theScreenHasNoHousingAndABottomLeftFrame() {
        QtScreenInfo info;
        const auto screens = info.screens();
        QCOMPARE(screens.size(), 1);
        QCOMPARE(screens.first().frame, QRectF(0, 0, 1512, 982));
        QCOMPARE(screens.first().safeAreaTop, 0.0);
        QVERIFY(!screens.first().auxiliaryTopLeftArea);
        QCOMPARE(info.mainScreen(), std::optional<ScreenDescription>(screens.first()));
    }

    void thePointerIsReadInScreenPointsWithItsButtons() {
        X11Pointer pointer;
        QProcess::execute(
            QStringLiteral("xdotool"),
            {QStringLiteral("mousemove"), QStringLiteral("100"), QStringLiteral("900")});
        const PointerReading first = pointer.read();
        QCOMPARE(first.location, QPointF(100, 82));
        QCOMPARE(first.buttons, 0u);
        QProcess::execute(QStringLiteral("xdotool"),
                          {QStringLiteral("mousedown"), QStringLiteral("1")});
        QCOMPARE(pointer.read().buttons & 1u, 1u);
        QProcess::execute(QStringLiteral("xdotool"),
                          {QStringLiteral("mouseup"), QStringLiteral("1")});
        QCOMPARE(pointer.read().buttons, 0u);
    }
};

MIRL_X11_TEST_MAIN(tst_X11Screens)

#include "tst_X11Screens.moc"
