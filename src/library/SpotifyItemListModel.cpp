#include "library/SpotifyItemListModel.h"

namespace MirlPlayer {

namespace {

QVariant optionalURL(const std::optional<QUrl>& url) {
    return url ? QVariant(*url) : QVariant(QUrl());
}

} // namespace

SpotifyItemListModel::SpotifyItemListModel(QObject* parent)
    : QAbstractListModel(parent) {}

int SpotifyItemListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant SpotifyItemListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= count())
        return {};
    const SpotifyItem& item = at(index.row());
    switch (role) {
    case IDRole:
        return item.id;
    case Qt::DisplayRole:
    case NameRole:
        return item.name;
    case SubtitleRole:
        return item.subtitle;
    case KindRole:
        return item.kind;
    case ImageRole:
        return optionalURL(item.image);
    case URIRole:
        return item.uri;
    case LargeImageRole:
        return optionalURL(item.largeImage);
    case DetailRole:
        return item.detail;
    case DurationRole:
        return item.durationMs ? QVariant(*item.durationMs) : QVariant();
    case ExplicitRole:
        return item.explicit_;
    case ArtistIDsRole:
        return item.artistIDs;
    case AlbumURIRole:
        return item.albumURI.value_or(QString());
    case AlbumNameRole:
        return item.albumName.value_or(QString());
    case ArtistNamesRole:
        return item.artistNames;
    case LikedRole:
        if (const std::optional<bool> liked = m_liked ? m_liked(item) : false)
            return *liked;
        return {};
    }
    return {};
}

QHash<int, QByteArray> SpotifyItemListModel::roleNames() const {
    return {{IDRole, "itemID"},
            {NameRole, "name"},
            {SubtitleRole, "subtitle"},
            {KindRole, "kind"},
            {ImageRole, "image"},
            {URIRole, "uri"},
            {LargeImageRole, "largeImage"},
            {DetailRole, "detail"},
            {DurationRole, "durationMs"},
            {ExplicitRole, "explicit"},
            {ArtistIDsRole, "artistIDs"},
            {AlbumURIRole, "albumURI"},
            {AlbumNameRole, "albumName"},
            {ArtistNamesRole, "artistNames"},
            {LikedRole, "liked"}};
}

QList<SpotifyItem> SpotifyItemListModel::items() const {
    if (!m_rows)
        return m_source;
    QList<SpotifyItem> out;
    out.reserve(m_rows->size());
    for (int row : *m_rows)
        out.append(m_source.at(row));
    return out;
}

void SpotifyItemListModel::setRows(const QList<SpotifyItem>& source,
                                   const std::optional<QList<int>>& rows) {
    const bool sameSource =
        source.constData() == m_source.constData() && source.size() == m_source.size();
    if (sameSource && rows == m_rows)
        return;
    const int old = count();
    // A longer whole list that begins with the rows shown: only the new rows are inserted.
    const bool extends =
        !rows && !m_rows && source.size() > old &&
        std::equal(m_source.cbegin(), m_source.cend(), source.cbegin(),
                   [](const SpotifyItem& a, const SpotifyItem& b) { return a.id == b.id; });
    if (extends) {
        beginInsertRows({}, old, int(source.size() - 1));
        m_source = source;
        endInsertRows();
    } else {
        if (!rows && !m_rows && source == m_source)
            return;
        beginResetModel();
        m_source = source;
        m_rows = rows;
        endResetModel();
    }
    if (old != count())
        Q_EMIT countChanged();
}

QVariantMap SpotifyItemListModel::get(int row) const {
    if (row < 0 || row >= count())
        return {};
    QVariantMap map;
    const QHash<int, QByteArray> roles = roleNames();
    for (auto it = roles.cbegin(); it != roles.cend(); ++it)
        map.insert(QString::fromLatin1(it.value()), data(index(row), it.key()));
    return map;
}

void SpotifyItemListModel::setLikedSource(LikedSource source) {
    m_liked = std::move(source);
}

void SpotifyItemListModel::likesChanged() {
    if (count() > 0)
        Q_EMIT dataChanged(index(0), index(count() - 1), {LikedRole});
}

} // namespace MirlPlayer
