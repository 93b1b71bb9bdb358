#include "settings/SettingsPage.h"

namespace MirlPlayer::SettingsPages {

namespace {

struct PageInfo {
    const char* title;
    const char* subtitle;
    const char* icon;
};

const PageInfo& info(SettingsPage page) {
    static const PageInfo table[] = {
        {"Appearance", "The player, glass and controls.", "preferences-desktop-theme"},
        {"Visualizer", "Choose a look. Make it move with your music.", "audio-x-generic"},
        {"Audio", "Music access and connection status.", "audio-volume-high"},
        {"Spotify", "Your Spotify account in MIRL PRO.", "view-media-playlist"},
        {"Updates & Feedback", "Keep MIRL PRO up to date, report a problem or share an idea.",
         "view-refresh"},
    };
    return table[int(page)];
}

} // namespace

const QList<SettingsPage>& all() {
    static const QList<SettingsPage> pages{SettingsPage::appearance, SettingsPage::visualizer,
                                           SettingsPage::audio, SettingsPage::spotify,
                                           SettingsPage::updates};
    return pages;
}

QString title(SettingsPage page) {
    return QString::fromUtf8(info(page).title);
}

QString subtitle(SettingsPage page) {
    return QString::fromUtf8(info(page).subtitle);
}

QString iconName(SettingsPage page) {
    return QString::fromUtf8(info(page).icon);
}

std::optional<SettingsPage> fromTitle(const QString& name) {
    for (SettingsPage page : all()) {
        if (title(page) == name)
            return page;
    }
    return std::nullopt;
}

} // namespace MirlPlayer::SettingsPages
