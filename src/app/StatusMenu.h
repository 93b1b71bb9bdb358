#pragma once

#include <QString>
#include <functional>
#include <memory>

class QMenu;

namespace MirlPlayer {

class AppDelegate;

// The status menu, built afresh for every showing and never changed after: the program's name
// and version, "Settings…", "Setup Assistant…", "Reposition on Notch", the two feedback mails
// and "Quit". A right press
// on the panel pops it up. The delegate must outlive the menu.
std::unique_ptr<QMenu> buildStatusMenu(AppDelegate& delegate, std::function<void()> reposition);

// The version shown after "MIRL PRO ": the release, then the build number in brackets ("?"
// where the build has none).
QString versionText();

} // namespace MirlPlayer
