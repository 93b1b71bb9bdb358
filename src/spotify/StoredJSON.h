#pragma once

#include "spotify/SpotifyItem.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

namespace MirlPlayer::Stored {

// Strict readers for stored documents (items, the library memory, shortcuts). Each returns false
// when a key has the wrong type (or a required one is missing), and the caller then drops the whole
// document: caches have no format versions and no per-record recovery.

inline bool string(const QJsonObject& o, QStringView key, QString& out) {
    const QJsonValue v = o.value(key);
    if (!v.isString())
        return false;
    out = v.toString();
    return true;
}

inline bool optionalString(const QJsonObject& o, QStringView key, std::optional<QString>& out) {
    const QJsonValue v = o.value(key);
    if (v.isUndefined() || v.isNull())
        return true;
    if (!v.isString())
        return false;
    out = v.toString();
    return true;
}

inline bool optionalURL(const QJsonObject& o, QStringView key, std::optional<QUrl>& out) {
    std::optional<QString> text;
    if (!optionalString(o, key, text))
        return false;
    if (text)
        out = QUrl(*text);
    return true;
}

inline bool optionalNumber(const QJsonObject& o, QStringView key, std::optional<double>& out) {
    const QJsonValue v = o.value(key);
    if (v.isUndefined() || v.isNull())
        return true;
    if (!v.isDouble())
        return false;
    out = v.toDouble();
    return true;
}

inline bool optionalInteger(const QJsonObject& o, QStringView key, std::optional<qint64>& out) {
    std::optional<double> number;
    if (!optionalNumber(o, key, number))
        return false;
    if (number) {
        if (*number != double(qint64(*number)))
            return false;
        out = qint64(*number);
    }
    return true;
}

inline bool items(const QJsonValue& value, QList<SpotifyItem>& out, StringPool* pool = nullptr) {
    if (!value.isArray())
        return false;
    const QJsonArray list = value.toArray();
    out.reserve(list.size());
    for (const QJsonValue& entry : list) {
        if (!entry.isObject())
            return false;
        auto item = SpotifyItem::fromStored(entry.toObject(), pool);
        if (!item)
            return false;
        out.append(std::move(*item));
    }
    return true;
}

inline QJsonArray itemArray(const QList<SpotifyItem>& list) {
    QJsonArray out;
    for (const SpotifyItem& item : list)
        out.append(item.toStored());
    return out;
}

} // namespace MirlPlayer::Stored
