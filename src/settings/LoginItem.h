#pragma once

#include <QObject>
#include <QString>

namespace MirlPlayer {

// "Open at login": an XDG autostart entry for the program in the user's config folder. The file
// is the truth; nothing else remembers the choice. GUI thread.
class LoginItem : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool enabled READ enabled WRITE setEnabled NOTIFY enabledChanged)
public:
    // `folder` is the autostart folder; the shared instance uses $XDG_CONFIG_HOME/autostart.
    explicit LoginItem(QString folder, QString command, QObject* parent = nullptr);
    static LoginItem& shared();

    QString entryPath() const;
    bool enabled() const;
    // Writes or removes the entry; false when the file could not be written or removed.
    bool setEnabled(bool on);

Q_SIGNALS:
    void enabledChanged();

private:
    QString m_folder;
    QString m_command;
};

} // namespace MirlPlayer
