#include "platform/linux/service/MirlBusService.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QLoggingCategory>
#include <QMetaProperty>
#include <QTimer>
#include <cmath>

Q_LOGGING_CATEGORY(lcService, "mirl.service")

namespace MirlPlayer {

namespace {

enum Source { model, clock, capture, levels };

// The properties of the interface: bus name, D-Bus type, the object that carries the value and
// its property there, and whether changes are announced.
struct BusProperty {
    const char* name;
    const char* type;
    Source source;
    const char* property;
    bool announced;
};

constexpr BusProperty busProperties[] = {
    {"title", "s", model, "title", true},
    {"artist", "s", model, "artist", true},
    {"album", "s", model, "album", true},
    {"sourceName", "s", model, "sourceName", true},
    {"isPlaying", "b", model, "isPlaying", true},
    {"duration", "d", model, "duration", true},
    {"position", "d", clock, "position", false},
    {"trackURI", "s", model, "trackURI", true},
    {"levels", "ad", levels, "levels", false},
    {"captureStatus", "s", capture, "status", true},
    {"captureNeedsAttention", "b", capture, "needsAttention", true},
};

const BusProperty* find(const QString& name) {
    for (const BusProperty& property : busProperties) {
        if (name == QLatin1String(property.name))
            return &property;
    }
    return nullptr;
}

QVariant readProperty(const QObject* object, const char* name) {
    if (!object)
        return {};
    const int index = object->metaObject()->indexOfProperty(name);
    if (index < 0)
        return {};
    return object->metaObject()->property(index).read(object);
}

// D-Bus has no "none": an absent text is the empty text, an absent number 0.
QVariant busValue(const BusProperty& property, const QVariant& value) {
    const QByteArray type(property.type);
    if (type == "b")
        return value.toBool();
    if (type == "ad")
        return QVariant::fromValue(value.value<QList<double>>());
    if (type == "d") {
        bool ok = false;
        const double number = value.toDouble(&ok);
        return ok && std::isfinite(number) ? number : 0.0;
    }
    return value.toString();
}

QString interfaceXml() {
    QString xml = QStringLiteral("  <interface name=\"%1\">\n")
                      .arg(QLatin1String(MirlBusService::interfaceName));
    for (const BusProperty& property : busProperties) {
        xml += QStringLiteral("    <property name=\"%1\" type=\"%2\" access=\"read\"")
                   .arg(QLatin1String(property.name), QLatin1String(property.type));
        xml += property.announced
                   ? QStringLiteral("/>\n")
                   : QStringLiteral(">\n      <annotation name=\"org.freedesktop.DBus.Property."
                                    "EmitsChangedSignal\" value=\"false\"/>\n    </property>\n");
    }
    xml += QStringLiteral("    <method name=\"reopen\"/>\n"
                          "    <method name=\"openSettings\">\n"
                          "      <arg name=\"page\" type=\"s\" direction=\"in\"/>\n"
                          "    </method>\n"
                          "    <signal name=\"mirlState\">\n"
                          "      <arg name=\"state\" type=\"a{sv}\"/>\n"
                          "    </signal>\n"
                          "  </interface>\n");
    return xml;
}

} // namespace

MirlBusService::MirlBusService(QObject* model, QObject* clock, QObject* parent)
    : QDBusVirtualObject(parent)
    , m_model(model)
    , m_clock(clock) {
    watch(model, Source::model);
    m_announced = announcedValues();
}

void MirlBusService::setAudioSources(QObject* capture, QObject* levels) {
    m_capture = capture;
    m_levels = levels;
    watch(capture, Source::capture);
    m_announced = announcedValues();
}

// Announced properties of `source` schedule an announcement when they change.
void MirlBusService::watch(QObject* source, int kind) {
    if (!source)
        return;
    const QMetaMethod schedule =
        metaObject()->method(metaObject()->indexOfMethod("scheduleAnnouncement()"));
    for (const BusProperty& entry : busProperties) {
        if (entry.source != kind || !entry.announced)
            continue;
        const int index = source->metaObject()->indexOfProperty(entry.property);
        if (index < 0) {
            qCWarning(lcService) << source << "has no property" << entry.property;
            continue;
        }
        const QMetaProperty property = source->metaObject()->property(index);
        if (property.hasNotifySignal())
            connect(source, property.notifySignal(), this, schedule);
    }
}

bool MirlBusService::registerOn(const QDBusConnection& bus) {
    m_bus = bus;
    if (!bus.isConnected())
        return false;
    if (!m_bus.registerVirtualObject(QString::fromLatin1(objectPath), this)) {
        qCDebug(lcService) << "cannot export" << objectPath;
        return false;
    }
    if (!m_bus.registerService(QString::fromLatin1(serviceName))) {
        qCDebug(lcService) << serviceName << "is taken:" << m_bus.lastError().message();
        m_bus.unregisterObject(QString::fromLatin1(objectPath));
        return false;
    }
    return true;
}

bool MirlBusService::claimName(const QDBusConnection& bus) {
    if (!bus.isConnected() || !bus.interface())
        return true;
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
        bus.interface()->registerService(QString::fromLatin1(serviceName),
                                         QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    // A bus that cannot answer is no proof of another copy.
    return !reply.isValid() || reply.value() == QDBusConnectionInterface::ServiceRegistered;
}

bool MirlBusService::askRunningCopyToReopen(const QDBusConnection& bus) {
    const QDBusMessage call = QDBusMessage::createMethodCall(
        QString::fromLatin1(serviceName), QString::fromLatin1(objectPath),
        QString::fromLatin1(interfaceName), QStringLiteral("reopen"));
    return QDBusConnection(bus).call(call, QDBus::Block, 5000).type() == QDBusMessage::ReplyMessage;
}

QVariant MirlBusService::value(const char* name) const {
    const BusProperty* property = find(QLatin1String(name));
    if (!property)
        return {};
    const QObject* sources[] = {m_model.data(), m_clock.data(), m_capture.data(), m_levels.data()};
    return busValue(*property, readProperty(sources[property->source], property->property));
}

QVariantMap MirlBusService::announcedValues() const {
    QVariantMap values;
    for (const BusProperty& property : busProperties) {
        if (property.announced)
            values.insert(QLatin1String(property.name), value(property.name));
    }
    return values;
}

QString MirlBusService::introspect(const QString&) const {
    return interfaceXml();
}

bool MirlBusService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    const QString ours = QString::fromLatin1(interfaceName);
    const auto error = [&](const char* name, const QString& text) {
        connection.send(message.createErrorReply(QLatin1String(name), text));
        return true;
    };
    if (message.interface() == ours || message.interface().isEmpty()) {
        if (message.member() == u"reopen") {
            connection.send(message.createReply());
            Q_EMIT reopenRequested();
            return true;
        }
        if (message.member() != u"openSettings")
            return false;
        // Like the in-process request: a page title, or anything else for the first page.
        const QVariantList args = message.arguments();
        if (args.size() != 1 || args.constFirst().metaType().id() != QMetaType::QString)
            return error("org.freedesktop.DBus.Error.InvalidArgs",
                         QStringLiteral("openSettings takes one string, a page title"));
        connection.send(message.createReply());
        Q_EMIT openSettingsRequested(args.constFirst().toString());
        return true;
    }
    if (message.interface() != u"org.freedesktop.DBus.Properties")
        return false; // introspection and the rest: Qt's own handling
    const QList<QVariant> args = message.arguments();
    if (args.isEmpty() || args.first().toString() != ours)
        return error("org.freedesktop.DBus.Error.UnknownInterface",
                     QStringLiteral("No such interface"));
    if (message.member() == u"GetAll") {
        QVariantMap all;
        for (const BusProperty& property : busProperties)
            all.insert(QLatin1String(property.name), value(property.name));
        connection.send(message.createReply(all));
        return true;
    }
    const BusProperty* property = args.size() > 1 ? find(args.at(1).toString()) : nullptr;
    if (!property)
        return error("org.freedesktop.DBus.Error.UnknownProperty",
                     QStringLiteral("No such property"));
    if (message.member() == u"Get") {
        connection.send(
            message.createReply(QVariant::fromValue(QDBusVariant(value(property->name)))));
        return true;
    }
    return error("org.freedesktop.DBus.Error.PropertyReadOnly",
                 QStringLiteral("The property is read-only"));
}

void MirlBusService::scheduleAnnouncement() {
    // A track change moves several properties in one turn of the event loop; they go out as one
    // signal.
    if (m_scheduled)
        return;
    m_scheduled = true;
    QTimer::singleShot(0, this, &MirlBusService::announceChanges);
}

void MirlBusService::announceChanges() {
    m_scheduled = false;
    const QVariantMap now = announcedValues();
    QVariantMap changed;
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        if (m_announced.value(it.key()) != it.value())
            changed.insert(it.key(), it.value());
    }
    m_announced = now;
    if (changed.isEmpty() || !m_bus.isConnected())
        return;
    QDBusMessage signal = QDBusMessage::createSignal(
        QString::fromLatin1(objectPath), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("PropertiesChanged"));
    signal << QString::fromLatin1(interfaceName) << changed << QStringList();
    m_bus.send(signal);
}

} // namespace MirlPlayer
