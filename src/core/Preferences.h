#pragma once

#include <QObject>
#include <QSettings>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <optional>

namespace MirlPlayer {

// The user's settings: one key per setting in an INI file at
// $XDG_CONFIG_HOME/MIRL PRO/preferences.conf. Owners read with their own in-code default; a value
// that is stored but cannot be read as the asked type counts as absent. Writes go to disk at once.
// Used on the GUI thread only; models that need a value on another thread keep their own copy.
class Preferences : public QObject {
    Q_OBJECT
public:
    explicit Preferences(const QString& filePath, QObject* parent = nullptr);

    static Preferences& shared();
    static QString defaultPath();
    QString filePath() const;

    // The persistent domain: what is stored, without any defaults.
    bool contains(const QString& key) const;
    QVariantMap persistentDomain() const;
    QVariant object(const QString& key) const; // invalid when absent

    bool boolValue(const QString& key, bool fallback) const;
    double doubleValue(const QString& key, double fallback) const;
    // A stored number as it stands, infinities and NaN included; text counts when it parses.
    std::optional<double> numberValue(const QString& key) const;
    int intValue(const QString& key, int fallback) const;
    QString stringValue(const QString& key, const QString& fallback = {}) const;
    QVariantMap mapValue(const QString& key) const; // empty when absent or not a dictionary

    void setValue(const QString& key, const QVariant& value);
    void remove(const QString& key);
    // Re-reads the file, for values written by another process.
    void reload();

Q_SIGNALS:
    void changed(const QString& key);

private:
    mutable QSettings m_settings;
};

} // namespace MirlPlayer
