#include "library/LibraryShortcut.h"

#include "spotify/StoredJSON.h"

#include <QJsonDocument>

namespace MirlPlayer {

QVariantMap LibraryShortcut::toVariant() const {
    return {{QStringLiteral("id"), id},
            {QStringLiteral("name"), name},
            {QStringLiteral("kind"), kind},
            {QStringLiteral("image"), image.value_or(QUrl())}};
}

LibraryShortcut LibraryShortcut::fromItem(const SpotifyItem& item) {
    return {item.id, item.name, item.kind, item.image ? item.image : item.largeImage};
}

namespace LibraryShortcuts {

QList<LibraryShortcut> defaultShortcuts() {
    const QString builtin = QStringLiteral("builtin");
    return {{QStringLiteral("Playlists"), QStringLiteral("Playlists"), builtin, std::nullopt},
            {QStringLiteral("Liked Songs"), QStringLiteral("Liked Songs"), builtin, std::nullopt}};
}

bool isPinnable(const QString& kind) {
    return kind == u"playlist" || kind == u"album" || kind == u"artist";
}

QByteArray encode(const QList<LibraryShortcut>& list) {
    QJsonArray array;
    for (const LibraryShortcut& s : list) {
        QJsonObject o{{QStringLiteral("id"), s.id},
                      {QStringLiteral("name"), s.name},
                      {QStringLiteral("kind"), s.kind}};
        if (s.image)
            o.insert(u"image", s.image->toString());
        array.append(o);
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

QList<LibraryShortcut> load(const QByteArray& stored, const QList<LibraryShortcut>& defaults) {
    QList<LibraryShortcut> list;
    const QJsonDocument document = QJsonDocument::fromJson(stored);
    for (const QJsonValue& entry : document.array()) {
        LibraryShortcut s;
        const QJsonObject o = entry.toObject();
        if (!entry.isObject() || !Stored::string(o, u"id", s.id) ||
            !Stored::string(o, u"name", s.name) || !Stored::string(o, u"kind", s.kind) ||
            !Stored::optionalURL(o, u"image", s.image)) {
            list.clear();
            break;
        }
        list.append(s);
    }
    for (const LibraryShortcut& d : defaults)
        if (std::none_of(list.cbegin(), list.cend(), [&](const auto& s) { return s.id == d.id; }))
            list.append(d);
    return list;
}

bool move(QList<LibraryShortcut>& list, const LibraryShortcut& shortcut,
          const std::optional<QString>& beforeID) {
    if (beforeID && *beforeID == shortcut.id)
        return false;
    list.removeIf([&](const LibraryShortcut& s) { return s.id == shortcut.id; });
    qsizetype place = list.size();
    if (beforeID)
        for (qsizetype i = 0; i < list.size(); ++i)
            if (list.at(i).id == *beforeID) {
                place = i;
                break;
            }
    list.insert(place, shortcut);
    return true;
}

QByteArray encodeHistory(const QList<SpotifyItem>& items) {
    return QJsonDocument(Stored::itemArray(items)).toJson(QJsonDocument::Compact);
}

QList<SpotifyItem> loadHistory(const QByteArray& stored) {
    QList<SpotifyItem> items;
    const QJsonDocument document = QJsonDocument::fromJson(stored);
    if (!document.isArray() || !Stored::items(document.array(), items))
        return {};
    return items.mid(0, historyLimit);
}

void record(QList<SpotifyItem>& history, const SpotifyItem& item) {
    history.removeIf([&](const SpotifyItem& s) { return s.id == item.id; });
    history.prepend(item);
    if (history.size() > historyLimit)
        history.resize(historyLimit);
}

} // namespace LibraryShortcuts

} // namespace MirlPlayer
