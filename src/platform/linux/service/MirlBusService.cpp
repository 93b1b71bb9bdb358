#include "platform/linux/service/MirlBusService.h"

#include <QDBusMessage>
#include <QLoggingCategory>
#include <QMetaProperty>
#include <QTimer>
#include <cmath>

Q_LOGGING_CATEGORY(lcService, "mirl.service")

namespace MirlPlayer {

namespace {

// The properties announced with PropertiesChanged, with the model that carries them.
constexpr const char* modelProperties[] = {"title",     "artist",   "album",   "sourceName",
                                           "isPlaying", "duration", "trackURI"};

QVariant readProperty(const QObject* object, const char* name) {
    if (!object)
        return {};
    const int index = object->metaObject()->indexOfProperty(name);
    if (index < 0)
        return {};
    return object->metaObject()->property(index).read(object);
}

// D-Bus has no "none": an absent text is the empty text, an absent number 0.
QVariant busValue(const char* name, const QVariant& value) {
    const QByteArray key(name);
    if (key == "isPlaying" || key == "captureNeedsAttention")
        return value.toBool();
    if (key == "levels")
        return QVariant::fromValue(value.value<QList<double>>());
    if (key == "duration" || key == "position") {
        bool ok = false;
        const double number = value.toDouble(&ok);
        return ok && std::isfinite(number) ? number : 0.0;
    }
    return value.toString();
}

} // namespace

MirlBusService::MirlBusService(QObject* model, QObject* clock, QObject* parent)
    : QObject(parent)
    , m_model(model)
    , m_clock(clock) {
    new MirlBusAdaptor(this);
    const QMetaMethod schedule =
        metaObject()->method(metaObject()->indexOfMethod("scheduleAnnouncement()"));
    for (const char* name : modelProperties) {
        const int index = model ? model->metaObject()->indexOfProperty(name) : -1;
        if (index < 0) {
            qCWarning(lcService) << "the now-playing model has no property" << name;
            continue;
        }
        const QMetaProperty property = model->metaObject()->property(index);
        if (property.hasNotifySignal())
            connect(model, property.notifySignal(), this, schedule);
    }
    m_announced = announcedValues();
}

bool MirlBusService::registerOn(const QDBusConnection& bus) {
    m_bus = bus;
    if (!bus.isConnected())
        return false;
    if (!m_bus.registerObject(QString::fromLatin1(objectPath), this,
                              QDBusConnection::ExportAdaptors)) {
        qCDebug(lcService) << "cannot export" << objectPath;
        return false;
    }
    if (!m_bus.registerService(QString::fromLatin1(serviceName))) {
        qCDebug(lcService) << serviceName << "is taken:" << m_bus.lastError().message();
        return false;
    }
    return true;
}

void MirlBusService::setAudioSources(QObject* capture, QObject* levels) {
    m_capture = capture;
    m_levels = levels;
    if (capture) {
        const QMetaMethod schedule =
            metaObject()->method(metaObject()->indexOfMethod("scheduleAnnouncement()"));
        for (const char* name : {"status", "needsAttention"}) {
            const QMetaProperty property =
                capture->metaObject()->property(capture->metaObject()->indexOfProperty(name));
            if (property.isValid() && property.hasNotifySignal())
                connect(capture, property.notifySignal(), this, schedule);
        }
    }
    m_announced = announcedValues();
}

QVariant MirlBusService::value(const char* name) const {
    const QByteArray key(name);
    if (key == "position")
        return busValue(name, readProperty(m_clock.data(), name));
    if (key == "levels")
        return busValue(name, readProperty(m_levels.data(), "levels"));
    if (key == "captureStatus")
        return busValue(name, readProperty(m_capture.data(), "status"));
    if (key == "captureNeedsAttention")
        return busValue(name, readProperty(m_capture.data(), "needsAttention"));
    return busValue(name, readProperty(m_model.data(), name));
}

QVariantMap MirlBusService::announcedValues() const {
    QVariantMap values;
    for (const char* name : modelProperties)
        values.insert(QString::fromLatin1(name), value(name));
    for (const char* name : {"captureStatus", "captureNeedsAttention"})
        values.insert(QString::fromLatin1(name), value(name));
    return values;
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

MirlBusAdaptor::MirlBusAdaptor(MirlBusService* service)
    : QDBusAbstractAdaptor(service)
    , m_service(service) {}

QString MirlBusAdaptor::title() const {
    return m_service->value("title").toString();
}
QString MirlBusAdaptor::artist() const {
    return m_service->value("artist").toString();
}
QString MirlBusAdaptor::album() const {
    return m_service->value("album").toString();
}
QString MirlBusAdaptor::sourceName() const {
    return m_service->value("sourceName").toString();
}
bool MirlBusAdaptor::isPlaying() const {
    return m_service->value("isPlaying").toBool();
}
double MirlBusAdaptor::duration() const {
    return m_service->value("duration").toDouble();
}
double MirlBusAdaptor::position() const {
    return m_service->value("position").toDouble();
}
QString MirlBusAdaptor::trackURI() const {
    return m_service->value("trackURI").toString();
}
QList<double> MirlBusAdaptor::levels() const {
    return m_service->value("levels").value<QList<double>>();
}
QString MirlBusAdaptor::captureStatus() const {
    return m_service->value("captureStatus").toString();
}
bool MirlBusAdaptor::captureNeedsAttention() const {
    return m_service->value("captureNeedsAttention").toBool();
}

} // namespace MirlPlayer
