#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QtGlobal>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <sys/eventfd.h>
#include <unistd.h>

namespace MirlPlayer {

// Carries the newest value of T from one producer thread to the GUI thread without allocating
// or blocking on the producer's side: the producer fills a preallocated slot and publishes it
// with one atomic exchange (a triple buffer); the GUI thread takes the newest slot when a
// ThreadWake calls it. A value that a newer one overtook before the GUI thread ran is
// skipped: only the newest matters to a display.
template <typename T> class MainThreadHandoff {
public:
    explicit MainThreadHandoff(std::function<void(const T&)> deliver)
        : m_deliver(std::move(deliver)) {}
    MainThreadHandoff(const MainThreadHandoff&) = delete;
    MainThreadHandoff& operator=(const MainThreadHandoff&) = delete;

    // Producer: the slot to fill before publish().
    T& back() { return m_slots[m_back]; }

    // Producer: hands the filled slot over. Returns whether the GUI thread has taken the one
    // before, so that a wake-up is needed; otherwise one is pending and finds this newer value.
    bool publish() {
        const int previous = m_middle.exchange(m_back | fresh, std::memory_order_acq_rel);
        m_back = previous & indexMask;
        return !(previous & fresh);
    }

    // GUI thread: delivers the newest value if one arrived since the last take. Returns whether
    // it delivered.
    bool take() {
        if (!(m_middle.load(std::memory_order_acquire) & fresh))
            return false;
        m_front = m_middle.exchange(m_front, std::memory_order_acq_rel) & indexMask;
        m_deliver(m_slots[m_front]);
        return true;
    }

private:
    static constexpr int fresh = 4;
    static constexpr int indexMask = 3;

    std::function<void(const T&)> m_deliver;
    std::array<T, 3> m_slots{};
    int m_back = 0;               // producer's
    std::atomic<int> m_middle{1}; // shared: index, plus `fresh` when unread
    int m_front = 2;              // consumer's
};

// Wakes the thread of `owner` (the GUI thread, or a serial queue's) from a producer thread
// through an eventfd, at most once until that thread has run: the producer publishes everything
// a block yields and then wakes once, so values made together cost one wake-up. Waking is safe
// on a real-time thread: no lock, no allocation. `onWake` runs in the context of `owner`, so
// nothing arrives once the owner is gone.
class ThreadWake {
public:
    ThreadWake(QObject* owner, std::function<void()> onWake)
        : m_onWake(std::move(onWake))
        , m_fd(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
        if (m_fd < 0)
            qFatal("ThreadWake: eventfd failed");
        // The notifier lives on the owner's thread, which is where values are delivered.
        m_notifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Read);
        m_notifier->moveToThread(owner->thread());
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, owner, [this] { run(); });
    }
    ~ThreadWake() {
        m_notifier.reset();
        ::close(m_fd);
    }
    ThreadWake(const ThreadWake&) = delete;
    ThreadWake& operator=(const ThreadWake&) = delete;

    // Producer.
    void wake() {
        if (m_pending.exchange(true, std::memory_order_acq_rel))
            return;
        const quint64 one = 1;
        [[maybe_unused]] const auto written = ::write(m_fd, &one, sizeof one);
    }

    // Owner's thread. The wake-up is drained and cleared before the values are looked at, so that
    // a value published meanwhile is either taken now or wakes the thread again.
    void run() {
        quint64 count = 0;
        [[maybe_unused]] const auto read = ::read(m_fd, &count, sizeof count);
        m_pending.store(false, std::memory_order_release);
        m_onWake();
    }

private:
    std::function<void()> m_onWake;
    std::atomic<bool> m_pending{false};
    int m_fd;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace MirlPlayer
