// The browser's sidebar shortcuts and search history, kept in the preferences as JSON text.
#include "core/Preferences.h"
#include "library/SpotifyBrowser.h"

namespace MirlPlayer {

void SpotifyBrowser::moveShortcut(const LibraryShortcut& shortcut,
                                  const std::optional<QString>& beforeID) {
    if (!LibraryShortcuts::move(m_shortcuts, shortcut, beforeID))
        return;
    Q_EMIT shortcutsChanged();
    saveShortcuts();
}

void SpotifyBrowser::pinRow(int row, const QString& beforeID) {
    if (row < 0 || row >= m_list.count() || !LibraryShortcuts::isPinnable(m_list.at(row).kind))
        return;
    moveShortcut(LibraryShortcut::fromItem(m_list.at(row)),
                 beforeID.isEmpty() ? std::nullopt : std::optional(beforeID));
}

void SpotifyBrowser::moveShortcutBefore(const QString& id, const QString& beforeID) {
    for (const LibraryShortcut& s : std::as_const(m_shortcuts))
        if (s.id == id)
            return moveShortcut(s, beforeID.isEmpty() ? std::nullopt : std::optional(beforeID));
}

void SpotifyBrowser::removeShortcut(const LibraryShortcut& shortcut) {
    if (shortcut.kind == u"builtin")
        return;
    m_shortcuts.removeIf([&](const LibraryShortcut& s) { return s.id == shortcut.id; });
    Q_EMIT shortcutsChanged();
    saveShortcuts();
    if (m_tab == shortcut.name)
        selectTab(QStringLiteral("Playlists"));
}

void SpotifyBrowser::removeShortcutID(const QString& id) {
    for (const LibraryShortcut& s : std::as_const(m_shortcuts))
        if (s.id == id)
            return removeShortcut(s);
}

void SpotifyBrowser::saveShortcuts() {
    m_defaults.setValue(LibraryShortcuts::shortcutsKey,
                        QString::fromUtf8(LibraryShortcuts::encode(m_shortcuts)));
}

void SpotifyBrowser::recordRecent(const SpotifyItem& item) {
    LibraryShortcuts::record(m_recents, item);
    saveRecents();
}

void SpotifyBrowser::clearRecents() {
    m_recents.clear();
    saveRecents();
}

void SpotifyBrowser::removeRecentRow(int row) {
    if (!isSearchHome() || row < 0 || row >= m_list.count())
        return;
    const QString id = m_list.at(row).id;
    m_recents.removeIf([&](const SpotifyItem& item) { return item.id == id; });
    saveRecents();
}

void SpotifyBrowser::saveRecents() {
    m_defaults.setValue(LibraryShortcuts::historyKey,
                        QString::fromUtf8(LibraryShortcuts::encodeHistory(m_recents)));
    m_recentsModel.setItems(m_recents);
    if (isSearchHome())
        publishVisible();
}

} // namespace MirlPlayer
