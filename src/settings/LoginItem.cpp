#include "settings/LoginItem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace MirlPlayer {

LoginItem::LoginItem(QString folder, QString command, QObject* parent)
    : QObject(parent)
    , m_folder(std::move(folder))
    , m_command(std::move(command)) {}

LoginItem& LoginItem::shared() {
    static LoginItem* item =
        new LoginItem(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                          QStringLiteral("/autostart"),
                      QCoreApplication::applicationFilePath());
    return *item;
}

QString LoginItem::entryPath() const {
    return m_folder + QStringLiteral("/com.kestrova.mirlpro.desktop");
}

bool LoginItem::enabled() const {
    return QFile::exists(entryPath());
}

bool LoginItem::setEnabled(bool on) {
    if (on == enabled())
        return true;
    bool done = false;
    if (on) {
        QDir().mkpath(m_folder);
        QSaveFile file(entryPath());
        if (file.open(QIODevice::WriteOnly)) {
            // The command is quoted as the desktop entry format asks, so a path with spaces
            // still starts.
            QString exec = m_command;
            exec.replace(u'\\', QStringLiteral("\\\\")).replace(u'"', QStringLiteral("\\\""));
            file.write(QStringLiteral("[Desktop Entry]\n"
                                      "Type=Application\n"
                                      "Name=MIRL PRO\n"
                                      "Exec=\"%1\"\n"
                                      "Icon=com.kestrova.mirlpro\n"
                                      "X-GNOME-Autostart-enabled=true\n"
                                      "NoDisplay=true\n")
                           .arg(exec)
                           .toUtf8());
            done = file.commit();
        }
    } else {
        done = QFile::remove(entryPath());
    }
    Q_EMIT enabledChanged();
    return done;
}

} // namespace MirlPlayer
