#pragma once

#include "platform/SleepWatch.h"

#include <QDBusConnection>
#include <QObject>

namespace MirlPlayer {

// Wake from sleep as logind tells it on the system bus: PrepareForSleep(false) is sent once the
// machine has resumed. Without a system bus (containers, test sessions) nothing is observed.
class LogindSleepWatch final : public QObject, public SleepWatch {
    Q_OBJECT
public:
    explicit LogindSleepWatch(const QDBusConnection& bus = QDBusConnection::systemBus(),
                              QObject* parent = nullptr);
    ~LogindSleepWatch() override;

    void observe(std::function<void()> woke) override;
    void stopObserving() override;
    bool isObserving() const { return m_subscribed; }

private Q_SLOTS:
    void onPrepareForSleep(bool sleeping);

private:
    QDBusConnection m_bus;
    std::function<void()> m_woke;
    bool m_subscribed = false;
};

} // namespace MirlPlayer
