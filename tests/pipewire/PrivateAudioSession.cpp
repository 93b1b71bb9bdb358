#include "PrivateAudioSession.h"

#include "platform/linux/pipewire/PipeWireGraph.h"
#include "support/TestEnv.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>

namespace MirlPlayer::Testing {

namespace {

bool waitFor(const std::function<bool()>& ready, int timeoutMs) {
    QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        if (ready())
            return true;
        QThread::msleep(50);
    }
    return ready();
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

// Runs scripts/test-env with `verb` on the session's file of variables.
bool runScript(const QString& verb, const QString& file, QString* error) {
    QProcess script;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("MIRL_TEST_ENV_PLAYER"), QStringLiteral("0"));
    script.setProcessEnvironment(env);
    script.setStandardOutputFile(QProcess::nullDevice());
    script.start(QStringLiteral(MIRL_TEST_ENV_SCRIPT), {verb, file});
    const bool ok = script.waitForFinished(30000) && script.exitStatus() == QProcess::NormalExit &&
                    script.exitCode() == 0;
    if (!ok && error)
        *error = QString::fromLocal8Bit(script.readAllStandardError()).trimmed();
    return ok;
}

} // namespace

PrivateAudioSession::PrivateAudioSession() = default;

PrivateAudioSession::~PrivateAudioSession() {
    for (auto& player : m_players) {
        if (player->state() != QProcess::NotRunning)
            stopPlayer(player->processId());
    }
    if (!m_dir.isEmpty())
        runScript(QStringLiteral("down"), m_files.filePath(QStringLiteral("env")), nullptr);
    if (!m_savedRuntime.isNull())
        qputenv("XDG_RUNTIME_DIR", m_savedRuntime);
    if (!m_savedBus.isNull())
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_savedBus);
}

bool PrivateAudioSession::start() {
    const QString file = m_files.filePath(QStringLiteral("env"));
    m_savedRuntime = qgetenv("XDG_RUNTIME_DIR");
    m_savedBus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!runScript(QStringLiteral("up"), file, &m_error) || !MirlTest::exportTestEnv(file)) {
        m_error = u"scripts/test-env up failed: " + m_error;
        return false;
    }
    // PipeWire is found through XDG_RUNTIME_DIR alone, so that a test can hide it by moving
    // that one variable.
    qunsetenv("PIPEWIRE_RUNTIME_DIR");
    m_dir = qEnvironmentVariable("MIRL_TEST_ENV");
    m_env = QProcessEnvironment::systemEnvironment();
    m_env.remove(QStringLiteral("DISPLAY"));
    return true;
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
    return QFileInfo::exists(m_dir + u"/pulse/native");
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
