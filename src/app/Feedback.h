#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QUrl>

namespace MirlPlayer {

class Theme;

// The few lines of context a problem report carries: enough to reproduce a look-related bug,
// nothing about the user.
struct FeedbackContext {
    QString versionText; // follows "MIRL "
    QString system;      // the distribution, as it names itself
    QString desktop;     // the desktop and its session type
    QString player;      // the music player followed, or "none"
    QString visualizer;  // the style's title, or "off (artwork only)"
    QString background;  // the background as it is drawn
};

// The context block: one line each, joined by line feeds.
QString feedbackContextBlock(const FeedbackContext& context);

// The pre-filled mail to `address`: a problem report (with the context block) or an idea (with
// the version only). Subject and body are percent-encoded whole, so no mail program can read a
// "+" as a blank or a "?" as the start of another field. Invalid when no URL can be built.
QUrl feedbackURL(bool idea, const FeedbackContext& context, const QString& address);

// The distribution's own name from the text of os-release (PRETTY_NAME, else NAME and
// VERSION_ID), or nothing.
QString distributionName(const QByteArray& osRelease);

// "GNOME on Wayland": the desktop (XDG_CURRENT_DESKTOP, else DESKTOP_SESSION) and the session
// type (XDG_SESSION_TYPE, else what the display variables say).
QString desktopDescription(const QProcessEnvironment& environment);

// The context of this machine and the current look. `player` is the followed player's name.
FeedbackContext currentFeedbackContext(const QString& versionText, const Theme& theme,
                                       const QString& player);

// Opens the mail in the desktop's mail program. Where none opens it, the support address goes
// onto the clipboard instead, so that it can be pasted into any mail program. Nothing is shown.
void composeFeedback(bool idea, const FeedbackContext& context);

// The address feedback goes to, chosen when the program is configured.
QString supportAddress();

} // namespace MirlPlayer
