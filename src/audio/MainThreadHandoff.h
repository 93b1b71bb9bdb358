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
// or blocking on the producer's side. The producer fills a preallocated slot, publishes it with
// one atomic exchange (a triple buffer) and wakes the GUI thread through an eventfd; the GUI
// thread, woken by a socket notifier, takes the newest slot. A value that a newer
// one overtook before the GUI thread ran is skipped: only the newest matters to a display. Delivery
// runs in the context of `owner`, so nothing arrives once the owner is gone.
template <typename T> class MainThreadHandoff {
public:
    MainThreadHandoff(QObject* owner, std::function<void(const T&)> deliver)
        : m_deliver(std::move(deliver))
        , m_fd(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
        if (m_fd < 0)
            qFatal("MainThreadHandoff: eventfd failed");
        // The notifier lives on the owner's thread, which is where values are delivered.
        m_notifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Read);
        m_notifier->moveToThread(owner->thread());
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, owner, [this] { take(); });
    }
    ~MainThreadHandoff() {
        m_notifier.reset();
        ::close(m_fd);
    }
    MainThreadHandoff(const MainThreadHandoff&) = delete;
    MainThreadHandoff& operator=(const MainThreadHandoff&) = delete;

    // Producer: the slot to fill before publish().
    T& back() { return m_slots[m_back]; }

    // Producer: hands the filled slot over and wakes the GUI thread, unless a value it has not
    // taken yet is waiting: then a wake-up is already pending, and it will find this newer one.
    void publish() {
        const int previous = m_middle.exchange(m_back | fresh, std::memory_order_acq_rel);
        m_back = previous & indexMask;
        if (previous & fresh)
            return;
        const quint64 one = 1;
        [[maybe_unused]] const auto written = ::write(m_fd, &one, sizeof one);
    }

    // GUI thread: delivers the newest value if one arrived since the last take. Returns whether
    // it delivered. The wake-up is drained before the slot is looked at, so that a value
    // published meanwhile is either taken now or wakes the thread again.
    bool take() {
        quint64 count = 0;
        [[maybe_unused]] const auto read = ::read(m_fd, &count, sizeof count);
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
    int m_fd;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace MirlPlayer
