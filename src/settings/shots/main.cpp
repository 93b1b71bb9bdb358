// Pictures of the settings window for the demo: every page, and a search, drawn by the real
// window over the shipped settings in a private home. Needs a display; the demo runs it on its
// virtual screen. Writes settings-<page>.png, settings-spotify-guide.png and settings-search.png
// into the folder given, and the updates page of a build with an update feed
// (settings-updates-feed.png) and with an update waiting (settings-updates-pending.png).
#include "app/ShotApplication.h"
#include "app/Updater.h"
#include "look/LookTypes.h"
#include "settings/SettingsModel.h"
#include "settings/SettingsPage.h"
#include "settings/SettingsWindow.h"

#include <QApplication>
#include <QDir>
#include <QQuickWindow>

using namespace MirlPlayer;

namespace {

QString fileName(SettingsPage page) {
    QString name = SettingsPages::title(page).toLower();
    return QStringLiteral("settings-") + name.section(u' ', 0, 0) + QStringLiteral(".png");
}

} // namespace

int main(int argc, char* argv[]) {
    ShotApplication app(argc, argv);
    registerLookTypes();

    SettingsWindow settings(QStringLiteral("0.1.0 (?)"));
    settings.open();
    if (!settings.window())
        return 1;
    int failures = 0;
    for (SettingsPage page : SettingsPages::all()) {
        settings.model()->setSelection(int(page));
        ShotApplication::settle(400);
        if (!settings.window()->grabWindow().save(app.path(fileName(page))))
            ++failures;
    }
    // The Spotify setup guide, as "Show step-by-step setup" opens it.
    settings.model()->setSelection(int(SettingsPage::spotify));
    ShotApplication::settle(200);
    if (QObject* guide = settings.window()->findChild<QObject*>(QStringLiteral("showGuide")))
        QMetaObject::invokeMethod(guide, "clicked");
    ShotApplication::settle(400);
    if (!settings.window()->grabWindow().save(
            app.path(QStringLiteral("settings-spotify-guide.png"))))
        ++failures;
    settings.model()->setSearch(QStringLiteral("glass"));
    ShotApplication::settle(400);
    if (!settings.window()->grabWindow().save(app.path(QStringLiteral("settings-search.png"))))
        ++failures;

    // As a build with an update feed shows it; its first check would come a minute later, long
    // after these pictures.
    settings.model()->setSearch({});
    settings.model()->setSelection(int(SettingsPage::updates));
    Updater& updater = Updater::shared();
    UpdateConfig feed;
    feed.feedURL = QUrl(QStringLiteral("https://updates.invalid/appcast.xml"));
    feed.publicKey = QByteArray(32, 1);
    updater.start(feed);
    ShotApplication::settle(400);
    if (!settings.window()->grabWindow().save(
            app.path(QStringLiteral("settings-updates-feed.png"))))
        ++failures;
    AppcastItem waiting;
    waiting.version = QStringLiteral("0.2.0");
    updater.willHandleShowingUpdate(false, waiting, false);
    ShotApplication::settle(400);
    if (!settings.window()->grabWindow().save(
            app.path(QStringLiteral("settings-updates-pending.png"))))
        ++failures;
    return failures;
}
