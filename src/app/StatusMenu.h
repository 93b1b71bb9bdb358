#pragma once

#include "app/Updater.h"

#include <QString>
#include <functional>
#include <memory>

class QMenu;

namespace MirlPlayer {

class AppDelegate;

// The status menu, built afresh for every showing and never changed after: the program's name
// and version, "Settings…", "Setup Assistant…", "Reposition on Notch", "Check for Updates…" (or
// "Update to <version>…" while an update waits; none in a build without updates), the two
// feedback mails and "Quit". A right press on the panel pops it up. The delegate and the updater
// must outlive the menu.
std::unique_ptr<QMenu> buildStatusMenu(AppDelegate& delegate, std::function<void()> reposition,
                                       Updater& updater = Updater::shared());

} // namespace MirlPlayer
