#include "core/MainLoopTicker.h"

#include <QEventLoop>
#include <QTest>
#include <QThread>

using namespace MirlPlayer;

class tst_MainLoopTicker : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void stopsFromItsOwnAction_data() {
        QTest::addColumn<bool>("mainThread");
        QTest::newRow("GLib source on the main loop") << true;
        QTest::newRow("QTimer on another thread") << false;
    }
    // Fires again and again until its own action stops it; nothing fires after that.
    void stopsFromItsOwnAction() {
        QFETCH(bool, mainThread);
        int fired = 0;
        bool active = true, onGlib = false;
        const auto run = [&] {
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
            active = ticker.isActive();
            onGlib = ticker.onGlib();
        };
        std::unique_ptr<QThread> worker(mainThread ? nullptr : QThread::create(run));
        if (worker) {
            worker->start();
            worker->wait();
        } else {
            run();
        }
        QCOMPARE(fired, 3);
        QVERIFY(!active);
        QCOMPARE(onGlib, mainThread);
    }
};

QTEST_GUILESS_MAIN(tst_MainLoopTicker)
#include "tst_MainLoopTicker.moc"
