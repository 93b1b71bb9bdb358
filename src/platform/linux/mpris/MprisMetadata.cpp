#include "platform/linux/mpris/MprisMetadata.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QRegularExpression>
#include <cmath>

namespace MirlPlayer::Mpris {

namespace {

QString joinedArtists(const QVariant& value) {
    if (value.metaType().id() == QMetaType::QString)
        return cleanText(value);
    if (value.metaType().id() != QMetaType::QStringList)
        return {};
    QStringList names;
    for (const QString& name : value.toStringList()) {
        if (!name.isEmpty())
            names.append(name);
    }
    return cleanText(names.join(QStringLiteral(", ")));
}

QString trackIdPath(const QVariant& trackId) {
    if (trackId.metaType() == QMetaType::fromType<QDBusObjectPath>())
        return trackId.value<QDBusObjectPath>().path();
    if (trackId.metaType().id() == QMetaType::QString)
        return trackId.toString();
    return {};
}

} // namespace

bool isNameOrInstance(const QString& name, const QString& base) {
    return name.compare(base, Qt::CaseInsensitive) == 0 ||
           name.startsWith(base + u'.', Qt::CaseInsensitive);
}

QString cleanText(const QVariant& value) {
    if (value.metaType().id() != QMetaType::QString)
        return {};
    QString text = value.toString().left(maxTextLength);
    for (QChar& c : text) {
        if (c.category() == QChar::Other_Control)
            c = u' ';
    }
    return text;
}

double microsecondsToMs(const QVariant& value) {
    return readMicroseconds(value).value_or(0.0);
}

std::optional<double> readMicroseconds(const QVariant& value) {
    double us = 0;
    switch (value.metaType().id()) {
    case QMetaType::LongLong:
        us = double(value.toLongLong());
        break;
    case QMetaType::ULongLong:
        us = double(value.toULongLong());
        break;
    case QMetaType::Int:
        us = value.toInt();
        break;
    case QMetaType::UInt:
        us = value.toUInt();
        break;
    case QMetaType::Double:
        us = value.toDouble();
        break;
    default:
        return std::nullopt;
    }
    if (!std::isfinite(us) || us < 0)
        return std::nullopt;
    return us / 1000.0;
}

QVariantMap metadataMap(const QVariant& value) {
    if (value.metaType().id() == QMetaType::QVariantMap)
        return value.toMap();
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return {};
    const auto arg = value.value<QDBusArgument>();
    if (arg.currentSignature() != u"a{sv}")
        return {};
    QVariantMap map;
    arg >> map;
    return map;
}

std::optional<QString> spotifyTrackURI(const QVariant& trackId) {
    const QString id = trackIdPath(trackId);
    static const QRegularExpression form(
        QStringLiteral(R"(\A(?:/com/spotify/track/|spotify:track:)([A-Za-z0-9]{1,64})\z)"));
    const auto m = form.match(id);
    if (!m.hasMatch())
        return std::nullopt;
    return QStringLiteral("spotify:track:") + m.captured(1);
}

Snapshot snapshotFromPlayerProperties(const QVariantMap& properties, Source source) {
    const QVariant status = properties.value(QStringLiteral("PlaybackStatus"));
    if (status.metaType().id() != QMetaType::QString)
        return Snapshot::empty(source);
    const QString state = status.toString();
    if (state != u"Playing" && state != u"Paused")
        return Snapshot::empty(source);

    const QVariantMap metadata = metadataMap(properties.value(QStringLiteral("Metadata")));
    Snapshot s;
    s.source = source;
    s.hasTrack = true;
    s.playing = state == u"Playing";
    s.title = cleanText(metadata.value(QStringLiteral("xesam:title")));
    const QString trackId = trackIdPath(metadata.value(QStringLiteral("mpris:trackid")));
    if (!s.playing && s.title.isEmpty() && (trackId.isEmpty() || trackId == noTrackId))
        return Snapshot::empty(source);
    s.artist = joinedArtists(metadata.value(QStringLiteral("xesam:artist")));
    s.album = cleanText(metadata.value(QStringLiteral("xesam:album")));
    s.durationMs = microsecondsToMs(metadata.value(QStringLiteral("mpris:length")));
    s.positionMs = microsecondsToMs(properties.value(QStringLiteral("Position")));
    const QVariant art = metadata.value(QStringLiteral("mpris:artUrl"));
    if (art.metaType().id() == QMetaType::QString)
        s.artURL = art.toString();
    if (source == Source::spotify)
        s.trackURI = spotifyTrackURI(metadata.value(QStringLiteral("mpris:trackid")));
    return s;
}

PlayerNames splitPlayers(QStringList names, const QString& spotifyService) {
    names.sort();
    PlayerNames split;
    for (const QString& name : std::as_const(names)) {
        if (!name.startsWith(namePrefix))
            continue;
        if (!isNameOrInstance(name, spotifyService))
            split.others.append(name);
        else if (split.spotify.isEmpty())
            split.spotify = name;
    }
    return split;
}

} // namespace MirlPlayer::Mpris
