#include "app/Feedback.h"

#include "core/PrivateFile.h"
#include "look/Skin.h"
#include "look/Theme.h"
#include "visualizers/VizStyle.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QSysInfo>

namespace MirlPlayer {

namespace {

QString encoded(const QString& text) {
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

// One value of os-release: quotes and the backslash escapes of its shell-like syntax removed.
QString osReleaseValue(QByteArray value) {
    value = value.trimmed();
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front())
        value = value.mid(1, value.size() - 2);
    QByteArray out;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size())
            ++i;
        out += value[i];
    }
    return QString::fromUtf8(out).trimmed();
}

QString sessionType(const QProcessEnvironment& env) {
    const QString type = env.value(QStringLiteral("XDG_SESSION_TYPE")).toLower();
    if (type == u"wayland" || (type.isEmpty() && env.contains(QStringLiteral("WAYLAND_DISPLAY"))))
        return QStringLiteral("Wayland");
    if (type == u"x11" || (type.isEmpty() && env.contains(QStringLiteral("DISPLAY"))))
        return QStringLiteral("X11");
    return type;
}

} // namespace

QString feedbackContextBlock(const FeedbackContext& c) {
    return QStringList{QStringLiteral("MIRL ") + c.versionText,
                       c.system,
                       QStringLiteral("Desktop: ") + c.desktop,
                       QStringLiteral("Player: ") + c.player,
                       QStringLiteral("Visualizer: ") + c.visualizer,
                       QStringLiteral("Background: ") + c.background}
        .join(u'\n');
}

QUrl feedbackURL(bool idea, const FeedbackContext& context, const QString& address) {
    const QString subject =
        idea ? QStringLiteral("MIRL PRO idea") : QStringLiteral("MIRL PRO problem report");
    const QString body =
        idea ? QStringLiteral("Your idea:\n\n\n---\nMIRL ") + context.versionText
             : QStringLiteral("What happened?\n\n\nWhat did you expect to happen?\n\n\n"
                              "Steps to make it happen again (if you know them):\n\n\n---\n") +
                   feedbackContextBlock(context);
    QUrl url;
    url.setScheme(QStringLiteral("mailto"));
    url.setPath(address);
    url.setQuery(QStringLiteral("subject=") + encoded(subject) + QStringLiteral("&body=") +
                     encoded(body),
                 QUrl::StrictMode);
    return url.isValid() && !address.isEmpty() ? url : QUrl();
}

QString distributionName(const QByteArray& osRelease) {
    QString pretty, name, version;
    for (const QByteArray& line : osRelease.split('\n')) {
        const qsizetype equals = line.indexOf('=');
        if (equals <= 0 || line.startsWith('#'))
            continue;
        const QByteArray key = line.left(equals).trimmed();
        const QString value = osReleaseValue(line.mid(equals + 1));
        if (key == "PRETTY_NAME")
            pretty = value;
        else if (key == "NAME")
            name = value;
        else if (key == "VERSION_ID")
            version = value;
    }
    if (!pretty.isEmpty())
        return pretty;
    return QString(name + u' ' + version).trimmed();
}

QString desktopDescription(const QProcessEnvironment& env) {
    QString desktop = env.value(QStringLiteral("XDG_CURRENT_DESKTOP"));
    desktop.replace(u':', QStringLiteral(", "));
    if (desktop.isEmpty())
        desktop = env.value(QStringLiteral("DESKTOP_SESSION"), QStringLiteral("unknown"));
    const QString session = sessionType(env);
    return session.isEmpty() ? desktop : desktop + QStringLiteral(" on ") + session;
}

FeedbackContext currentFeedbackContext(const QString& versionText, const Theme& theme,
                                       const QString& player) {
    FeedbackContext c;
    c.versionText = versionText;
    // os-release is looked for where the standard puts it: /etc first, then /usr/lib.
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        c.system = distributionName(readFile(QString::fromLatin1(path), 64 * 1024).value_or(""));
        if (!c.system.isEmpty())
            break;
    }
    if (c.system.isEmpty())
        c.system = QSysInfo::prettyProductName();
    c.desktop = desktopDescription(QProcessEnvironment::systemEnvironment());
    c.player = player.isEmpty() ? QStringLiteral("none") : player;
    c.visualizer =
        theme.showVisualizer()
            ? VizStyles::title(VizStyles::fromID(theme.vizID()).value_or(VizStyle::waterfall))
            : QStringLiteral("off (artwork only)");
    c.background = title(effectiveBackground(theme.backgroundStyleID()));
    return c;
}

QString supportAddress() {
    return QStringLiteral(MIRL_SUPPORT_ADDRESS);
}

void composeFeedback(bool idea, const FeedbackContext& context) {
    const QUrl url = feedbackURL(idea, context, supportAddress());
    if (url.isEmpty())
        return;
    if (!QDesktopServices::openUrl(url))
        QGuiApplication::clipboard()->setText(supportAddress());
}

} // namespace MirlPlayer
