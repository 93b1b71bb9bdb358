#pragma once

#include <QObject>
#include <QString>

namespace MirlPlayer {

class Preferences;
class SpotifyLibrary;
class SpotifyMemory;

// The logic of the Spotify page: what the account row says and does, the app row, the client
// ID entry of the setup guide and the library cache row. GUI thread.
class SpotifyAccountPage : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString statusText READ statusText NOTIFY changed)
    Q_PROPERTY(QString explanation READ explanation NOTIFY changed)
    Q_PROPERTY(QString mainButton READ mainButton NOTIFY changed)
    Q_PROPERTY(bool connected READ connected NOTIFY changed)
    Q_PROPERTY(QString appText READ appText NOTIFY changed)
    Q_PROPERTY(bool ownApp READ ownApp NOTIFY changed)
    Q_PROPERTY(bool hasClientID READ hasClientID NOTIFY changed)
    Q_PROPERTY(bool cacheCleared READ cacheCleared NOTIFY changed)
public:
    SpotifyAccountPage(SpotifyLibrary& library, SpotifyMemory& memory, Preferences& prefs,
                       QObject* parent = nullptr);

    QString statusText() const;
    QString explanation() const;
    QString mainButton() const;
    bool connected() const;
    QString appText() const;
    bool ownApp() const;
    bool hasClientID() const;
    bool cacheCleared() const { return m_cacheCleared; }

    // "Connect Spotify", "Reconnect…" or "Cancel", whichever the button reads.
    Q_INVOKABLE void mainAction();
    Q_INVOKABLE void disconnect();
    // The guide's "Connect Spotify": empty when the ID was taken (and sign-in begun unless
    // already connected), else the text that explains what a client ID looks like.
    Q_INVOKABLE QString submitClientID(const QString& text);
    Q_INVOKABLE void clearCache();
    // The page was left: "Cache cleared" lasts only while it stays.
    Q_INVOKABLE void pageLeft();

Q_SIGNALS:
    void changed();

private:
    bool scopesMissing() const;

    SpotifyLibrary& m_library;
    SpotifyMemory& m_memory;
    Preferences& m_prefs;
    bool m_cacheCleared = false;
};

} // namespace MirlPlayer
