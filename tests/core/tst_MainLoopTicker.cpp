#include "core/MainLoopTicker.h"

#include <QEventLoop>
#include <QTest>

using namespace MirlPlayer;

class tst_MainLoopTicker : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // On the main loop it runs as a GLib source, fires again and again until its own action
    // stops it, and nothing fires after that.
    void stopsFromItsOwnAction() {
        int fired = 0;
        QEventLoop loop;
        MainLoopTicker ticker(5, [&] {
            if (++fired == 3) {
                ticker.stop();
                QTimer::singleShot(100, &loop, &QEventLoop::quit);
            }
        });
        QTimer::singleShot(5000, &loop, &QEventLoop::quit);
        ticker.start();
        loop.exec();
        QVERIFY(ticker.onGlib());
        QCOMPARE(fired, 3);
        QVERIFY(!ticker.isActive());
    }
};

QTEST_GUILESS_MAIN(tst_MainLoopTicker)
#include "tst_MainLoopTicker.moc"
