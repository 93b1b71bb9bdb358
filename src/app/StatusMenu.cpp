#include "app/StatusMenu.h"

#include "app/AppDelegate.h"

#include <QCoreApplication>
#include <QMenu>

namespace MirlPlayer {

QString versionText() {
    return QStringLiteral(MIRL_VERSION " (?)");
}

std::unique_ptr<QMenu> buildStatusMenu(AppDelegate& delegate, std::function<void()> reposition) {
    auto menu = std::make_unique<QMenu>();
    menu->addAction(QStringLiteral("MIRL PRO ") + versionText())->setEnabled(false);
    menu->addSeparator();
    QAction* settings =
        menu->addAction(QStringLiteral("Settings…"), [&delegate] { delegate.openSettings(); });
    settings->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    menu->addAction(QStringLiteral("Setup Assistant…"), [&delegate] { delegate.showSetup(); });
    QAction* place = menu->addAction(QStringLiteral("Reposition on Notch"), std::move(reposition));
    place->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    menu->addSeparator();
    menu->addAction(QStringLiteral("Report a Problem…"), [&delegate] { delegate.reportProblem(); });
    menu->addAction(QStringLiteral("Share an Idea…"), [&delegate] { delegate.shareIdea(); });
    menu->addSeparator();
    QAction* quit = menu->addAction(QStringLiteral("Quit"), qApp, &QCoreApplication::quit);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    return menu;
}

} // namespace MirlPlayer
