#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace MirlPlayer {

// The pages of the settings window, in sidebar order.
enum class SettingsPage { appearance, visualizer, audio, spotify, updates };

namespace SettingsPages {

const QList<SettingsPage>& all();
QString title(SettingsPage page);
QString subtitle(SettingsPage page);
// The symbol drawn beside the title in the sidebar (SymbolGlyph draws it the same under every
// icon theme).
QString symbol(SettingsPage page);
// The page a title names (as `mirl.openSettings` carries it); nothing for any other string.
std::optional<SettingsPage> fromTitle(const QString& title);

} // namespace SettingsPages

} // namespace MirlPlayer
