#include "platform/linux/logind/LogindSleepWatch.h"

namespace MirlPlayer {

namespace {
const QString service = QStringLiteral("org.freedesktop.login1");
const QString path = QStringLiteral("/org/freedesktop/login1");
const QString interface = QStringLiteral("org.freedesktop.login1.Manager");
const QString signal = QStringLiteral("PrepareForSleep");
} // namespace

LogindSleepWatch::LogindSleepWatch(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus) {}

LogindSleepWatch::~LogindSleepWatch() {
    stopObserving();
}

void LogindSleepWatch::observe(std::function<void()> woke) {
    m_woke = std::move(woke);
    if (m_subscribed || !m_bus.isConnected())
        return;
    m_subscribed =
        m_bus.connect(service, path, interface, signal, this, SLOT(onPrepareForSleep(bool)));
}

void LogindSleepWatch::stopObserving() {
    m_woke = nullptr;
    if (!m_subscribed)
        return;
    m_bus.disconnect(service, path, interface, signal, this, SLOT(onPrepareForSleep(bool)));
    m_subscribed = false;
}

void LogindSleepWatch::onPrepareForSleep(bool sleeping) {
    if (!sleeping && m_woke)
        m_woke();
}

} // namespace MirlPlayer
