#include "panel/logic/MirlStateSignal.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace MirlPlayer {

QVariantMap MirlState::userInfo() const {
    return {{QStringLiteral("expanded"), expanded ? QStringLiteral("1") : QStringLiteral("0")},
            {QStringLiteral("x"), QString::number(x)},
            {QStringLiteral("y"), QString::number(y)},
            {QStringLiteral("w"), QString::number(w)},
            {QStringLiteral("h"), QString::number(h)}};
}

void MirlStateSignal::send(const MirlState& state) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    QDBusMessage message = QDBusMessage::createSignal(path, interface, member);
    message << state.userInfo();
    bus.send(message);
}

} // namespace MirlPlayer
