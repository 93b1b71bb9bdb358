#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QObject>
#include <QPointer>
#include <QVariantMap>

namespace MirlPlayer {

// The program on the session bus: service "com.kestrova.mirlpro", object "/com/kestrova/mirlpro",
// interface "com.kestrova.mirlpro". It mirrors the now-playing model as read-only properties
// (title, artist, album, sourceName, isPlaying, duration, position, trackURI), what the program
// hears (levels: the current 128 band levels of the player's audio; captureStatus and
// captureNeedsAttention: the capture's status row), announces their changes with
// org.freedesktop.DBus.Properties.PropertiesChanged, and takes the methods reopen (what opening
// the program again does; a second launch calls it) and openSettings(page) (the settings window,
// on the page of that title when it names one). The panel's own signal, mirlState, goes out
// on the same object and interface (see MirlStateSignal) and is declared here for introspection.
//
// One table in the source lists the properties with their types and where they are read; the
// introspection, the property calls and the announcements all come from it. The values are read
// from the models through their meta-objects, so the service holds no copy of its own truth.
// Position moves six times a second while playing and levels up to thirty times; like an MPRIS
// player's Position they are read on demand and not announced.
class MirlBusService : public QDBusVirtualObject {
    Q_OBJECT
public:
    static constexpr const char* serviceName = "com.kestrova.mirlpro";
    static constexpr const char* objectPath = "/com/kestrova/mirlpro";
    static constexpr const char* interfaceName = "com.kestrova.mirlpro";

    // `model` carries title, artist, album, sourceName, isPlaying, duration and trackURI;
    // `clock` carries position. Both must outlive nothing: a destroyed model reads as empty.
    MirlBusService(QObject* model, QObject* clock, QObject* parent = nullptr);

    // `capture` carries status and needsAttention (the audio capture settings); `levels` carries
    // levels (the level store). Either may be absent: its properties then read as empty.
    void setAudioSources(QObject* capture, QObject* levels);

    // Puts the object and the name on `bus`. False when the bus is missing or another process
    // holds the name; the program runs on without it.
    bool registerOn(const QDBusConnection& bus);

    // One running copy: takes the name on `bus` unless another process holds it. False only
    // when another copy runs; without a bus there is nothing to share and it is true.
    static bool claimName(const QDBusConnection& bus);
    // Asks the copy that holds the name to do what opening the program again does.
    static bool askRunningCopyToReopen(const QDBusConnection& bus);

    QVariant value(const char* name) const;

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

Q_SIGNALS:
    // Another launch of the program asked for what a reopen does.
    void reopenRequested();
    // Someone asked for the settings window; `page` is a page title or anything else.
    void openSettingsRequested(const QString& page);

private Q_SLOTS:
    void scheduleAnnouncement();

private:
    void watch(QObject* source, int kind);
    void announceChanges();
    QVariantMap announcedValues() const;

    QPointer<QObject> m_model;
    QPointer<QObject> m_clock;
    QPointer<QObject> m_capture;
    QPointer<QObject> m_levels;
    QDBusConnection m_bus{QString()};
    QVariantMap m_announced; // what the bus last heard
    bool m_scheduled = false;
};

} // namespace MirlPlayer
