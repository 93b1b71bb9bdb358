#include "platform/linux/desktop/DesktopContrast.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace MirlPlayer {

namespace {

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");

struct Source {
    const char* group;
    const char* key;
};
// The freedesktop preference says 1 for higher contrast; GNOME's switch is a Bool.
constexpr Source sources[] = {{"org.freedesktop.appearance", "contrast"},
                              {"org.gnome.desktop.a11y.interface", "high-contrast"}};

QString name(const QString& group, const QString& key) {
    return group + u' ' + key;
}

// The portal's older Read wraps the value in a second variant.
QVariant unwrap(QVariant value) {
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

DesktopContrast::DesktopContrast(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus) {
    m_bus.connect(portal, portalPath, settings, QStringLiteral("SettingChanged"), this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));
    for (const Source& s : sources)
        read(QLatin1String(s.group), QLatin1String(s.key));
}

std::optional<bool> DesktopContrast::highContrast() const {
    if (m_known.isEmpty())
        return std::nullopt;
    for (bool on : m_known)
        if (on)
            return true;
    return false;
}

void DesktopContrast::read(const QString& group, const QString& key) {
    QDBusMessage ask =
        QDBusMessage::createMethodCall(portal, portalPath, settings, QStringLiteral("Read"));
    ask << group << key;
    auto* call = new QDBusPendingCallWatcher(m_bus.asyncCall(ask, 5000), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, group, key] {
        call->deleteLater();
        const QDBusMessage reply = call->reply();
        // An unknown key is an error reply: the desktop has no such setting. A value that came
        // by signal meanwhile is newer than this answer.
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty() &&
            !m_known.contains(name(group, key)))
            take(group, key, reply.arguments().constFirst());
    });
}

void DesktopContrast::settingChanged(const QString& group, const QString& key,
                                     const QDBusVariant& value) {
    for (const Source& s : sources) {
        if (group == QLatin1String(s.group) && key == QLatin1String(s.key))
            take(group, key, value.variant());
    }
}

void DesktopContrast::take(const QString& group, const QString& key, const QVariant& value) {
    const QVariant v = unwrap(value);
    const bool on = v.metaType().id() == QMetaType::Bool ? v.toBool() : v.toUInt() == 1;
    const std::optional<bool> before = highContrast();
    m_known.insert(name(group, key), on);
    if (highContrast() != before)
        Q_EMIT changed();
}

} // namespace MirlPlayer
