#pragma once

#include <QObject>
#include <QString>
#include <QThread>
#include <functional>

namespace MirlPlayer {

// A named serial queue: one thread with its own event loop. Work posted with async() runs in
// order, one item at a time. Timers and objects that must live on the queue use context().
class SerialQueue {
public:
    explicit SerialQueue(const QString& name,
                         QThread::Priority priority = QThread::InheritPriority);
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    const QString& name() const { return m_name; }
    void async(std::function<void()> work);
    // Runs work on the queue and waits for it. Never call it from the queue's own thread.
    void sync(const std::function<void()>& work);
    bool isCurrent() const;
    QObject* context() const { return m_context; }
    QThread* thread() const { return m_thread; }

private:
    QString m_name;
    QThread* m_thread;
    QObject* m_context;
};

// Runs work on the GUI thread. The call is dropped when `owner` is destroyed before it runs.
void onMain(const QObject* owner, std::function<void()> work);

// Runs work later on the GUI thread with no owner to guard it.
void onMain(std::function<void()> work);

} // namespace MirlPlayer
