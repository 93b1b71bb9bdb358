#include "app/StatusMenu.h"

#include "app/AppDelegate.h"
#include "app/Updater.h"

#include <QCoreApplication>
#include <QMenu>

namespace MirlPlayer {

std::unique_ptr<QMenu> buildStatusMenu(AppDelegate& delegate, std::function<void()> reposition,
                                       Updater& updater) {
    auto menu = std::make_unique<QMenu>();
    menu->addAction(QStringLiteral("MIRL PRO ") + Updater::versionText())->setEnabled(false);
    menu->addSeparator();
    QAction* settings =
        menu->addAction(QStringLiteral("Settings…"), [&delegate] { delegate.openSettings(); });
    settings->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    menu->addAction(QStringLiteral("Setup Assistant…"), [&delegate] { delegate.showSetup(); });
    QAction* place = menu->addAction(QStringLiteral("Reposition on Notch"), std::move(reposition));
    place->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    // A build without updates has no row for them.
    if (updater.available()) {
        const QString pending = updater.pendingVersion();
        QAction* update = menu->addAction(pending.isEmpty() ? QStringLiteral("Check for Updates…")
                                                            : QStringLiteral("Update to ") +
                                                                  pending + QStringLiteral("…"),
                                          &updater, &Updater::checkForUpdates);
        if (!pending.isEmpty()) {
            update->setIcon(QIcon::fromTheme(QStringLiteral("software-update-available")));
            update->setToolTip(QStringLiteral("Update available"));
        }
    }
    menu->addSeparator();
    menu->addAction(QStringLiteral("Report a Problem…"), [&delegate] { delegate.reportProblem(); });
    menu->addAction(QStringLiteral("Share an Idea…"), [&delegate] { delegate.shareIdea(); });
    menu->addSeparator();
    QAction* quit = menu->addAction(QStringLiteral("Quit"), qApp, &QCoreApplication::quit);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    return menu;
}

} // namespace MirlPlayer
