#include "PrivateAudioSession.h"

#include "platform/linux/pipewire/PipeWireGraph.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QThread>

namespace MirlPlayer::Testing {

namespace {

const char* const nullSinkConfig = R"(context.objects = [
  { factory = adapter
    args = {
      factory.name = support.null-audio-sink
      node.name = "mirl-test-null"
      node.description = "Test output"
      media.class = Audio/Sink
      audio.position = [ FL FR ]
      object.linger = true
    }
  }
]
)";

const char* const busConfig =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=%1</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

bool waitFor(const std::function<bool()>& ready, int timeoutMs) {
    QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        if (ready())
            return true;
        QThread::msleep(50);
    }
    return ready();
}

bool writeText(const QString& path, const QByteArray& text) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) == text.size();
}

std::vector<PipeWireObject> objectsOf(const QJsonArray& dump) {
    std::vector<PipeWireObject> objects;
    for (const QJsonValue& value : dump) {
        const QJsonObject object = value.toObject();
        PipeWireObject out;
        out.id = quint32(object.value(u"id").toInteger());
        out.type = object.value(u"type").toString();
        const QJsonObject props = object.value(u"info").toObject().value(u"props").toObject();
        for (auto it = props.begin(); it != props.end(); ++it)
            out.props.insert(it.key(), it.value().isString()
                                           ? it.value().toString()
                                           : QString::number(it.value().toInteger()));
        objects.push_back(std::move(out));
    }
    return objects;
}

} // namespace

PrivateAudioSession::PrivateAudioSession() = default;

PrivateAudioSession::~PrivateAudioSession() {
    for (auto& player : m_players) {
        if (player->state() != QProcess::NotRunning)
            stopPlayer(player->processId());
    }
    for (auto it = m_services.rbegin(); it != m_services.rend(); ++it) {
        QProcess& service = **it;
        if (service.state() == QProcess::NotRunning)
            continue;
        service.terminate();
        if (!service.waitForFinished(3000)) {
            service.kill();
            service.waitForFinished(1000);
        }
    }
    if (!m_savedRuntime.isNull())
        qputenv("XDG_RUNTIME_DIR", m_savedRuntime);
    if (!m_savedBus.isNull())
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_savedBus);
}

QProcess* PrivateAudioSession::spawn(const QString& program, const QStringList& args) {
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(m_env);
    process->setProcessChannelMode(QProcess::MergedChannels);
    process->setStandardOutputFile(m_dir->filePath(QFileInfo(program).fileName() + u".log"),
                                   QIODevice::Append);
    process->start(program, args);
    if (!process->waitForStarted(3000)) {
        m_error = program + u" did not start";
        return nullptr;
    }
    QProcess* raw = process.get();
    m_services.push_back(std::move(process));
    return raw;
}

bool PrivateAudioSession::start() {
    for (const char* tool : {"dbus-daemon", "pipewire", "wireplumber", "pw-dump", "mpv"}) {
        if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty()) {
            m_error = QStringLiteral("missing ") + QString::fromLatin1(tool);
            return false;
        }
    }
    // A short path: the sockets live here, and socket paths have a small size limit.
    m_dir = std::make_unique<QTemporaryDir>(QStringLiteral("/tmp/mirl-a-XXXXXX"));
    if (!m_dir->isValid()) {
        m_error = QStringLiteral("no temporary folder");
        return false;
    }
    QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QString runtime = m_dir->path();
    const QString config = m_dir->filePath(QStringLiteral("config"));
    const QString busPath = m_dir->filePath(QStringLiteral("bus"));
    QDir().mkpath(config + u"/pipewire/pipewire.conf.d");
    QDir().mkpath(config + u"/wireplumber");
    if (!writeText(config + u"/pipewire/pipewire.conf.d/50-null-sink.conf", nullSinkConfig) ||
        !writeText(m_dir->filePath(QStringLiteral("bus.conf")),
                   QString::fromLatin1(busConfig).arg(busPath).toUtf8())) {
        m_error = QStringLiteral("cannot write configuration");
        return false;
    }

    m_env = QProcessEnvironment::systemEnvironment();
    m_env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
    m_env.insert(QStringLiteral("XDG_CONFIG_HOME"), config);
    m_env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), u"unix:path=" + busPath);
    m_env.remove(QStringLiteral("PIPEWIRE_REMOTE"));
    m_env.remove(QStringLiteral("PIPEWIRE_RUNTIME_DIR"));
    m_env.remove(QStringLiteral("DISPLAY"));

    if (!spawn(QStringLiteral("dbus-daemon"),
               {QStringLiteral("--nofork"),
                u"--config-file=" + m_dir->filePath(QStringLiteral("bus.conf"))}))
        return false;
    if (!waitFor([&] { return QFileInfo::exists(busPath); }, 5000)) {
        m_error = QStringLiteral("the private bus did not come up");
        return false;
    }
    if (!spawn(QStringLiteral("pipewire"), {}))
        return false;
    if (!waitFor([&] { return QFileInfo::exists(runtime + u"/pipewire-0"); }, 5000)) {
        m_error = QStringLiteral("PipeWire did not come up");
        return false;
    }
    if (!spawn(QStringLiteral("wireplumber"), {}))
        return false;
    // Applications that speak the PulseAudio protocol (Spotify among them) reach PipeWire
    // through this bridge; it is optional on the machine.
    if (!QStandardPaths::findExecutable(QStringLiteral("pipewire-pulse")).isEmpty())
        spawn(QStringLiteral("pipewire-pulse"), {});

    // The test process itself talks to this session from now on.
    m_savedRuntime = qgetenv("XDG_RUNTIME_DIR");
    m_savedBus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (m_savedRuntime.isNull())
        m_savedRuntime = "";
    if (m_savedBus.isNull())
        m_savedBus = "";
    qputenv("XDG_RUNTIME_DIR", runtime.toUtf8());
    qputenv("DBUS_SESSION_BUS_ADDRESS", (u"unix:path=" + busPath).toUtf8());
    qunsetenv("PIPEWIRE_REMOTE");
    qunsetenv("PIPEWIRE_RUNTIME_DIR");

    // The session manager is ready when it has chosen the null sink as the default output.
    const bool ready = waitFor(
        [&] {
            for (const QJsonValue& value : dump()) {
                const QJsonObject object = value.toObject();
                if (object.value(u"type").toString() != u"PipeWire:Interface:Metadata")
                    continue;
                for (const QJsonValue& entry : object.value(u"metadata").toArray()) {
                    if (entry.toObject().value(u"key").toString() == u"default.audio.sink")
                        return true;
                }
            }
            return false;
        },
        10000);
    if (!ready)
        m_error = QStringLiteral("WirePlumber did not choose an output");
    return ready;
}

qint64 PrivateAudioSession::startPlayer(const QString& source, const QStringList& extraArgs) {
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(m_env);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    QStringList args{QStringLiteral("--no-config"),    QStringLiteral("--vo=null"),
                     QStringLiteral("--no-video"),     QStringLiteral("--loop=inf"),
                     QStringLiteral("--really-quiet"), QStringLiteral("--idle=no")};
    args += extraArgs;
    if (!extraArgs.join(u' ').contains(u"--ao="))
        args += QStringLiteral("--ao=pipewire");
    args += source;
    process->start(QStringLiteral("mpv"), args);
    if (!process->waitForStarted(3000))
        return 0;
    const qint64 pid = process->processId();
    m_players.push_back(std::move(process));
    return pid;
}

qint64 PrivateAudioSession::startTone(double hz, const QString& output) {
    return startPlayer(QStringLiteral("av://lavfi:sine=frequency=%1:sample_rate=48000").arg(hz),
                       {QStringLiteral("--load-scripts=no"), u"--ao=" + output});
}

bool PrivateAudioSession::hasPulseBridge() const {
    return QFileInfo::exists(m_dir->filePath(QStringLiteral("pulse/native")));
}

void PrivateAudioSession::stopPlayer(qint64 pid) {
    for (auto& player : m_players) {
        if (player->processId() != pid || player->state() == QProcess::NotRunning)
            continue;
        player->terminate();
        if (!player->waitForFinished(3000)) {
            player->kill();
            player->waitForFinished(1000);
        }
    }
}

bool PrivateAudioSession::waitForStreamOf(qint64 pid, int timeoutMs) {
    return waitFor([&] { return findProcessStream(objectsOf(dump()), pid).has_value(); },
                   timeoutMs);
}

QJsonArray PrivateAudioSession::dump() const {
    QProcess process;
    process.setProcessEnvironment(m_env);
    process.start(QStringLiteral("pw-dump"), {QStringLiteral("--no-colors")});
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(1000);
        return {};
    }
    return QJsonDocument::fromJson(process.readAllStandardOutput()).array();
}

} // namespace MirlPlayer::Testing
