#include "panel/logic/MirlStateSignal.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <optional>
#include <utility>

namespace MirlPlayer {

QVariantMap MirlState::userInfo() const {
    return {{QStringLiteral("expanded"), expanded ? QStringLiteral("1") : QStringLiteral("0")},
            {QStringLiteral("x"), QString::number(x)},
            {QStringLiteral("y"), QString::number(y)},
            {QStringLiteral("w"), QString::number(w)},
            {QStringLiteral("h"), QString::number(h)}};
}

void MirlStateSignal::send(const MirlState& state) {
    // Without a bus `send` fails silently, as the broadcast should; asking first would cost a
    // lock on every one of them.
    // The tick repeats the same state five times a second: the message is made once per state.
    static std::optional<std::pair<MirlState, QDBusMessage>> last;
    if (!last || last->first != state) {
        QDBusMessage message = QDBusMessage::createSignal(path, interface, member);
        message << state.userInfo();
        last.emplace(state, message);
    }
    QDBusConnection::sessionBus().send(last->second);
}

} // namespace MirlPlayer
