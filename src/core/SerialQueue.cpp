#include "core/SerialQueue.h"

#include <QCoreApplication>
#include <QMetaObject>

namespace MirlPlayer {

SerialQueue::SerialQueue(const QString& name, QThread::Priority priority)
    : m_name(name)
    , m_thread(new QThread)
    , m_context(new QObject) {
    m_thread->setObjectName(name);
    m_context->moveToThread(m_thread);
    // The context is deleted on its own thread once the loop has ended.
    QObject::connect(m_thread, &QThread::finished, m_context, &QObject::deleteLater);
    m_thread->start(priority);
}

SerialQueue::~SerialQueue() {
    m_thread->quit();
    m_thread->wait();
    delete m_thread;
}

void SerialQueue::async(std::function<void()> work) {
    QMetaObject::invokeMethod(m_context, std::move(work), Qt::QueuedConnection);
}

void SerialQueue::sync(const std::function<void()>& work) {
    Q_ASSERT_X(!isCurrent(), "SerialQueue::sync", "called from the queue's own thread");
    QMetaObject::invokeMethod(
        m_context, [&work] { work(); }, Qt::BlockingQueuedConnection);
}

bool SerialQueue::isCurrent() const {
    return QThread::currentThread() == m_thread;
}

void onMain(const QObject* owner, std::function<void()> work) {
    QMetaObject::invokeMethod(const_cast<QObject*>(owner), std::move(work), Qt::QueuedConnection);
}

void onMain(std::function<void()> work) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(work), Qt::QueuedConnection);
}

} // namespace MirlPlayer
