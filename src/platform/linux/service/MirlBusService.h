#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QObject>
#include <QPointer>
#include <QRectF>
#include <QVariantMap>

namespace MirlPlayer {

// The program on the session bus: service "com.kestrova.mirlpro", object "/com/kestrova/mirlpro",
// interface "com.kestrova.mirlpro". It mirrors the now-playing model as read-only properties
// (title, artist, album, sourceName, isPlaying, duration, position, trackURI), what the program
// hears (levels: the current 128 band levels of the player's audio; captureStatus and
// captureNeedsAttention: the capture's status row), announces their changes with
// org.freedesktop.DBus.Properties.PropertiesChanged. The panel's own signal, mirlState, goes out
// on the same object and interface (see MirlStateSignal) and is declared here for introspection.
//
// The properties are read from the model through its meta-object by these names, so the service
// holds no copy of its own truth. Position moves six times a second while playing and levels up
// to thirty times; like an MPRIS player's Position they are read on demand and not announced.
class MirlBusService : public QObject {
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

    QVariant value(const char* name) const;

private Q_SLOTS:
    void scheduleAnnouncement();

private:
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

// The exported interface. Property reads go straight to the model.
class MirlBusAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.kestrova.mirlpro")
    Q_CLASSINFO("D-Bus Introspection",
                "  <interface name=\"com.kestrova.mirlpro\">\n"
                "    <property name=\"title\" type=\"s\" access=\"read\"/>\n"
                "    <property name=\"artist\" type=\"s\" access=\"read\"/>\n"
                "    <property name=\"album\" type=\"s\" access=\"read\"/>\n"
                "    <property name=\"sourceName\" type=\"s\" access=\"read\"/>\n"
                "    <property name=\"isPlaying\" type=\"b\" access=\"read\"/>\n"
                "    <property name=\"duration\" type=\"d\" access=\"read\"/>\n"
                "    <property name=\"position\" type=\"d\" access=\"read\">\n"
                "      <annotation name=\"org.freedesktop.DBus.Property.EmitsChangedSignal\" "
                "value=\"false\"/>\n"
                "    </property>\n"
                "    <property name=\"trackURI\" type=\"s\" access=\"read\"/>\n"
                "    <property name=\"levels\" type=\"ad\" access=\"read\">\n"
                "      <annotation name=\"org.freedesktop.DBus.Property.EmitsChangedSignal\" "
                "value=\"false\"/>\n"
                "    </property>\n"
                "    <property name=\"captureStatus\" type=\"s\" access=\"read\"/>\n"
                "    <property name=\"captureNeedsAttention\" type=\"b\" access=\"read\"/>\n"
                "    <signal name=\"mirlState\">\n"
                "      <arg name=\"state\" type=\"a{sv}\"/>\n"
                "    </signal>\n"
                "  </interface>\n")
    Q_PROPERTY(QString title READ title)
    Q_PROPERTY(QString artist READ artist)
    Q_PROPERTY(QString album READ album)
    Q_PROPERTY(QString sourceName READ sourceName)
    Q_PROPERTY(bool isPlaying READ isPlaying)
    Q_PROPERTY(double duration READ duration)
    Q_PROPERTY(double position READ position)
    Q_PROPERTY(QString trackURI READ trackURI)
    Q_PROPERTY(QList<double> levels READ levels)
    Q_PROPERTY(QString captureStatus READ captureStatus)
    Q_PROPERTY(bool captureNeedsAttention READ captureNeedsAttention)
public:
    explicit MirlBusAdaptor(MirlBusService* service);

    QString title() const;
    QString artist() const;
    QString album() const;
    QString sourceName() const;
    bool isPlaying() const;
    double duration() const;
    double position() const;
    QString trackURI() const;
    QList<double> levels() const;
    QString captureStatus() const;
    bool captureNeedsAttention() const;

private:
    MirlBusService* m_service;
};

} // namespace MirlPlayer
