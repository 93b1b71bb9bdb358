#pragma once

#include "spotify/SpotifyItem.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>
#include <functional>

namespace MirlPlayer {

// Rows of items for a list view: every field of the record as a role, plus whether the song is
// liked as the library knows it. Rows are a whole list or chosen rows of it (a filter's answer),
// so a keystroke over thousands of songs copies no records. Replacing the list by a longer one
// that begins with the same rows inserts only the new ones, so a view keeps its place while pages
// arrive.
class SpotifyItemListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the library's models")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        IDRole = Qt::UserRole + 1,
        NameRole,
        SubtitleRole,
        KindRole,
        ImageRole,
        URIRole,
        LargeImageRole,
        DetailRole,
        DurationRole,
        ExplicitRole,
        ArtistIDsRole,
        AlbumURIRole,
        AlbumNameRole,
        ArtistNamesRole,
        LikedRole,
    };

    explicit SpotifyItemListModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return int(m_rows ? m_rows->size() : m_source.size()); }
    const SpotifyItem& at(int row) const {
        return m_rows ? m_source.at(m_rows->at(row)) : m_source.at(row);
    }
    // The rows as records.
    QList<SpotifyItem> items() const;
    void setItems(const QList<SpotifyItem>& items) { setRows(items, std::nullopt); }
    // `rows` picks rows of `source` in order; none shows all of it.
    void setRows(const QList<SpotifyItem>& source, const std::optional<QList<int>>& rows);
    // The record of a row, for the view's actions; an empty item outside the list.
    Q_INVOKABLE QVariantMap get(int row) const;

    // Where the liked role comes from (none while unknown: the role is then undefined);
    // `likesChanged` tells every row to ask again.
    using LikedSource = std::function<std::optional<bool>(const SpotifyItem&)>;
    void setLikedSource(LikedSource source);
    void likesChanged();

Q_SIGNALS:
    void countChanged();

private:
    QList<SpotifyItem> m_source;
    std::optional<QList<int>> m_rows;
    LikedSource m_liked;
};

} // namespace MirlPlayer
