#include "core/SerialQueue.h"

#include <QCoreApplication>
#include <QTest>
#include <atomic>
#include <vector>

using namespace MirlPlayer;

class tst_SerialQueue : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void workRunsInOrderOnTheQueueThread() {
        SerialQueue queue(QStringLiteral("notch.music.poll"));
        std::vector<int> order;
        QThread* seen = nullptr;
        for (int i = 0; i < 100; ++i)
            queue.async([&order, i] { order.push_back(i); });
        queue.sync([&] { seen = QThread::currentThread(); });
        QCOMPARE(order.size(), size_t(100));
        for (int i = 0; i < 100; ++i)
            QCOMPARE(order[i], i);
        QCOMPARE(seen, queue.thread());
        QVERIFY(seen != QThread::currentThread());
        QCOMPARE(queue.thread()->objectName(), QStringLiteral("notch.music.poll"));
    }

    void onMainIsDroppedWhenTheOwnerIsGone() {
        SerialQueue queue(QStringLiteral("q"));
        auto* owner = new QObject;
        std::atomic<int> ran{0};
        queue.sync([&] { onMain(owner, [&] { ++ran; }); });
        delete owner;
        QCoreApplication::processEvents();
        QCOMPARE(ran.load(), 0);

        QObject alive;
        queue.sync([&] { onMain(&alive, [&] { ++ran; }); });
        QTRY_COMPARE(ran.load(), 1);
    }
};

QTEST_GUILESS_MAIN(tst_SerialQueue)
#include "tst_SerialQueue.moc"
