#pragma once

#include <QString>
#include <QVariantMap>

namespace MirlPlayer {

// The panel's state as other processes see it: whether the pill is expanded and its rectangle
// in screen points (bottom-left origin), truncated to integers.
struct MirlState {
    bool expanded = false;
    int x = 0, y = 0, w = 0, h = 0;

    // The signal's payload: every value a string.
    QVariantMap userInfo() const;
    bool operator==(const MirlState&) const = default;
};

// Emits the state as the D-Bus signal "mirlState" of interface "com.kestrova.mirlpro" on the
// session bus. Sending a signal needs no owned name, so this works before the program's service
// is registered; a missing bus makes it silent.
class MirlStateSignal {
public:
    static inline const QString interface = QStringLiteral("com.kestrova.mirlpro");
    static inline const QString path = QStringLiteral("/com/kestrova/mirlpro");
    static inline const QString member = QStringLiteral("mirlState");

    static void send(const MirlState& state);
};

} // namespace MirlPlayer
