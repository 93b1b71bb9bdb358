#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

namespace MirlPlayer {

// One release in the update feed: an RSS item with the common update extensions (the
// version compared with the running build, the version shown, the enclosure's address, its
// length in bytes and its Ed25519 signature).
struct AppcastItem {
    QString version;      // compared with the running build
    QString shortVersion; // shown to the user; may be empty
    QUrl url;
    qint64 length = 0;
    QByteArray signature; // decoded; empty when the feed carries none or an unreadable one

    QString displayVersion() const { return shortVersion.isEmpty() ? version : shortVersion; }
};

// The items of a feed, in feed order. Nothing when the bytes are not a well-formed feed. Items
// without a version or an enclosure, or meant for another operating system, are left out.
std::optional<QList<AppcastItem>> parseAppcast(const QByteArray& feed);

// The newest item newer than `current`, if any.
std::optional<AppcastItem> newestUpdate(const QList<AppcastItem>& items, const QString& current);

// Orders versions part by part: numbers as numbers, words as text, a missing part as zero
// ("1.10" > "1.9", "1.0" == "1.0.0"). Negative, zero or positive.
int compareVersions(const QString& a, const QString& b);

} // namespace MirlPlayer
