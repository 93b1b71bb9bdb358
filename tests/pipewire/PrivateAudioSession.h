#pragma once

#include <QJsonArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <memory>
#include <vector>

namespace MirlPlayer::Testing {

// A private sound system of the test's own, brought up by scripts/test-env without a player:
// session bus, PipeWire with a null sink, WirePlumber and pipewire-pulse. The test process is
// pointed at it, so nothing reaches the user's real session; the script stops what it started,
// and the players started here are stopped by their pids.
class PrivateAudioSession {
public:
    PrivateAudioSession();
    ~PrivateAudioSession();
    PrivateAudioSession(const PrivateAudioSession&) = delete;
    PrivateAudioSession& operator=(const PrivateAudioSession&) = delete;

    // Starts the services and waits until the null sink is the output. False with a reason in
    // error().
    bool start();
    const QString& error() const { return m_error; }

    // Plays a sine tone of `hz` through PipeWire in a player process of its own. Returns its pid,
    // or 0 when it could not start. The tone plays until stopPlayer() or the session ends.
    // `output` is mpv's audio output: "pipewire", or "pulse" to go through the PulseAudio bridge.
    qint64 startTone(double hz, const QString& output = QStringLiteral("pipewire"));
    bool hasPulseBridge() const;
    // Plays `source` (an mpv media address) in mpv with the MPRIS plug-in loaded.
    qint64 startPlayer(const QString& source, const QStringList& extraArgs = {});
    void stopPlayer(qint64 pid);

    // Waits until process `pid` has an output stream node in the graph.
    bool waitForStreamOf(qint64 pid, int timeoutMs = 5000);

    // The graph as pw-dump shows it.
    QJsonArray dump() const;
    QProcessEnvironment environment() const { return m_env; }

private:
    QTemporaryDir m_files; // the script's file of variables
    QString m_dir;         // the environment's folder
    QProcessEnvironment m_env;
    QString m_error;
    std::vector<std::unique_ptr<QProcess>> m_players;
    QByteArray m_savedRuntime;
    QByteArray m_savedBus;
};

} // namespace MirlPlayer::Testing
