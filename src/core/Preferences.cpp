#include "core/Preferences.h"

#include <QStandardPaths>
#include <cmath>

namespace MirlPlayer {

Preferences::Preferences(const QString& filePath, QObject* parent)
    : QObject(parent)
    , m_settings(filePath, QSettings::IniFormat) {}

Preferences& Preferences::shared() {
    static Preferences* prefs = new Preferences(defaultPath());
    return *prefs;
}

QString Preferences::defaultPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/MIRL PRO/preferences.conf");
}

QString Preferences::filePath() const {
    return m_settings.fileName();
}

bool Preferences::contains(const QString& key) const {
    return m_settings.contains(key);
}

QVariantMap Preferences::persistentDomain() const {
    QVariantMap domain;
    const QStringList keys = m_settings.allKeys();
    for (const QString& key : keys)
        domain.insert(key, m_settings.value(key));
    return domain;
}

QVariant Preferences::object(const QString& key) const {
    return m_settings.value(key);
}

bool Preferences::boolValue(const QString& key, bool fallback) const {
    const QVariant v = m_settings.value(key);
    switch (v.typeId()) {
    case QMetaType::Bool:
        return v.toBool();
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Double:
        return v.toDouble() != 0.0;
    case QMetaType::QString: {
        const QString s = v.toString().trimmed().toLower();
        if (s == u"true" || s == u"yes" || s == u"1")
            return true;
        if (s == u"false" || s == u"no" || s == u"0")
            return false;
        return fallback;
    }
    default:
        return fallback;
    }
}

double Preferences::doubleValue(const QString& key, double fallback) const {
    const auto number = numberValue(key);
    return number && std::isfinite(*number) ? *number : fallback;
}

std::optional<double> Preferences::numberValue(const QString& key) const {
    const QVariant v = m_settings.value(key);
    bool ok = false;
    double d = 0;
    switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        d = v.toDouble(&ok);
        break;
    case QMetaType::QString:
        d = v.toString().trimmed().toDouble(&ok);
        break;
    default:
        break;
    }
    return ok ? std::optional<double>(d) : std::nullopt;
}

int Preferences::intValue(const QString& key, int fallback) const {
    const double d = doubleValue(key, std::nan(""));
    if (std::isnan(d) || d != std::floor(d) || std::abs(d) > 2147483647.0)
        return fallback;
    return int(d);
}

QString Preferences::stringValue(const QString& key, const QString& fallback) const {
    const QVariant v = m_settings.value(key);
    return v.typeId() == QMetaType::QString ? v.toString() : fallback;
}

QVariantMap Preferences::mapValue(const QString& key) const {
    const QVariant v = m_settings.value(key);
    return v.typeId() == QMetaType::QVariantMap ? v.toMap() : QVariantMap{};
}

void Preferences::setValue(const QString& key, const QVariant& value) {
    m_settings.setValue(key, value);
    m_settings.sync();
    Q_EMIT changed(key);
}

void Preferences::remove(const QString& key) {
    if (!m_settings.contains(key))
        return;
    m_settings.remove(key);
    m_settings.sync();
    Q_EMIT changed(key);
}

void Preferences::reload() {
    m_settings.sync();
}

} // namespace MirlPlayer
