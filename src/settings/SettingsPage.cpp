#include "settings/SettingsPage.h"

namespace MirlPlayer::SettingsPages {

namespace {

struct PageInfo {
    const char* title;
    const char* subtitle;
    const char* symbol;
};

const PageInfo& info(SettingsPage page) {
    static const PageInfo table[] = {
        {"Appearance", "The player, glass and controls.", "circle.lefthalf.filled"},
        {"Visualizer", "Choose a look. Make it move with your music.", "waveform"},
        {"Audio", "Music access and connection status.", "speaker.wave.2.fill"},
        {"Spotify", "Your Spotify account in MIRL PRO.", "music.note.list"},
        {"Updates & Feedback", "Keep MIRL PRO up to date, report a problem or share an idea.",
         "arrow.triangle.2.circlepath"},
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

QString symbol(SettingsPage page) {
    return QString::fromUtf8(info(page).symbol);
}

std::optional<SettingsPage> fromTitle(const QString& name) {
    for (SettingsPage page : all()) {
        if (title(page) == name)
            return page;
    }
    return std::nullopt;
}

} // namespace MirlPlayer::SettingsPages
