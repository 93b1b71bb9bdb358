#include "setup/SystemSetup.h"

#include "audio/AudioCaptureSettings.h"
#include "core/Preferences.h"
#include "platform/linux/pipewire/PipeWireCapture.h"

#include <QDBusConnection>
#include <QProcess>
#include <QStandardPaths>

namespace MirlPlayer {

MusicAutomation::App musicRow(const std::pair<QString, QString>& current, const QString& setting) {
    const QString prefix = QStringLiteral("org.mpris.MediaPlayer2.");
    if (!current.first.isEmpty())
        return MusicAutomation::musicPlayer(current.first, current.second);
    if (!setting.isEmpty()) {
        QString name = setting.section(u'.', 0, 0);
        name[0] = name[0].toUpper();
        return MusicAutomation::musicPlayer(prefix + setting, name);
    }
    return MusicAutomation::musicPlayer(prefix + QStringLiteral("cider"), QStringLiteral("Cider"));
}

std::optional<std::pair<QString, QStringList>> desktopSettings(const QString& what) {
    // The first of the desktop's own programs that is installed; each opens at the right place.
    using Command = std::pair<QString, QStringList>;
    const QList<Command> candidates =
        what == u"audio"
            ? QList<Command>{{QStringLiteral("pavucontrol"), {QStringLiteral("--tab=2")}},
                             {QStringLiteral("gnome-control-center"), {QStringLiteral("sound")}},
                             {QStringLiteral("systemsettings"), {QStringLiteral("kcm_pulseaudio")}}}
            : QList<Command>{
                  {QStringLiteral("flatpak"),
                   {QStringLiteral("run"), QStringLiteral("com.github.tchx84.Flatseal")}},
                  {QStringLiteral("gnome-control-center"), {QStringLiteral("applications")}},
                  {QStringLiteral("systemsettings"), {QStringLiteral("kcm_flatpak")}}};
    for (const auto& [program, arguments] : candidates) {
        const QString path = QStandardPaths::findExecutable(program);
        if (path.isEmpty())
            continue;
        if (program == u"flatpak" &&
            QStandardPaths::findExecutable(QStringLiteral("com.github.tchx84.Flatseal"),
                                           {QStringLiteral("/var/lib/flatpak/exports/bin")})
                .isEmpty())
            continue;
        return std::pair{path, arguments};
    }
    return std::nullopt;
}

std::unique_ptr<SetupModel> makeSetupModel(Preferences& prefs, SetupInputs inputs) {
    auto musicPlayer = [&prefs, current = inputs.musicPlayer] {
        return musicRow(current ? current() : std::pair<QString, QString>{},
                        prefs.stringValue(QStringLiteral("musicPlayer"), {}));
    };
    SetupModel::Services services = SetupModel::systemServices(musicPlayer);
    services.statusItemVisible = inputs.statusItemVisible;
    services.spotifyConnected = inputs.spotifyConnected;
    services.openSettings = [openSpotify = inputs.openSpotifySettings](const QString& what) {
        if (what == u"spotify") {
            if (openSpotify)
                openSpotify();
            return;
        }
        if (const auto command = desktopSettings(what))
            QProcess::startDetached(command->first, command->second);
    };
    // Looked up once per window: the pages ask on every change of a row.
    const bool audioSettings = desktopSettings(QStringLiteral("audio")).has_value();
    const bool permissionSettings = desktopSettings(QStringLiteral("automation")).has_value();
    services.canOpenSettings = [audioSettings, permissionSettings](const QString& what) {
        return what == u"spotify" || (what == u"audio" ? audioSettings : permissionSettings);
    };

    auto probe = std::make_unique<AudioProbe>(
        std::make_unique<PipeWireCapture>(), [](const QStringList& ids) {
            return MusicAutomation::playerProcess(ids, QDBusConnection::sessionBus());
        });
    // Capture was stored as off only when someone turned it off; anything else starts on.
    const bool stored = prefs.contains(QStringLiteral("audioCaptureEnabled"));
    const bool live = !stored || AudioCaptureSettings::shared().enabled();
    return std::make_unique<SetupModel>(std::move(services), std::move(probe), live);
}

} // namespace MirlPlayer
