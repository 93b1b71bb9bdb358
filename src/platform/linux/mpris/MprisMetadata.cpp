#include "platform/linux/mpris/MprisMetadata.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QRegularExpression>
#include <cmath>

namespace MirlPlayer::Mpris {

namespace {

bool isNameOrInstance(const QString& name, const QString& base) {
    return name.compare(base, Qt::CaseInsensitive) == 0 ||
           name.startsWith(base + u'.', Qt::CaseInsensitive);
}

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

} // namespace

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
        return 0;
    }
    if (!std::isfinite(us) || us < 0)
        return 0;
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
    QString id;
    if (trackId.metaType() == QMetaType::fromType<QDBusObjectPath>())
        id = trackId.value<QDBusObjectPath>().path();
    else if (trackId.metaType().id() == QMetaType::QString)
        id = trackId.toString();
    else
        return std::nullopt;
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

PlayerNames choosePlayers(QStringList names, const QString& spotifyService,
                          const QString& musicPlayer) {
    names.sort();
    PlayerNames chosen;
    QStringList others;
    for (const QString& name : names) {
        if (!name.startsWith(namePrefix))
            continue;
        if (isNameOrInstance(name, spotifyService)) {
            if (chosen.spotify.isEmpty())
                chosen.spotify = name;
        } else {
            others.append(name);
        }
    }
    const auto find = [&](const QString& player) -> QString {
        if (player.isEmpty())
            return {};
        for (const QString& name : others) {
            if (isNameOrInstance(name.mid(namePrefix.size()), player))
                return name;
        }
        return {};
    };
    chosen.music = find(musicPlayer.trimmed());
    if (chosen.music.isEmpty())
        chosen.music = find(QStringLiteral("cider"));
    if (chosen.music.isEmpty() && !others.isEmpty())
        chosen.music = others.first();
    return chosen;
}

} // namespace MirlPlayer::Mpris
