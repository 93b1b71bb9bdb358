// What listening costs: runs the program on a private X server (Xvfb, OpenGL through Mesa's
// llvmpipe) against the private player environment and measures the CPU time it uses per minute
// in three phases: capturing the playing player with the resting
// pill, with the card open on the bars visualizer, and with the player paused, when nothing of
// the capture may run. While the pill rests, cava (when installed) listens to the same stream in
// the same seconds: 128 bars at 60 frames a second through the PulseAudio interface, raw output
// to /dev/null; it is the baseline. Beside them runs a bare Qt Quick window redrawn 30 times a
// second (bare_window.cpp): what any panel drawn with the toolkit pays here. Each busy phase is
// cut into slices and its figure is the median of its slices; the paused figure is the whole
// phase.
// Every process is measured the same way: the kernel's own run time in nanoseconds, the first
// field of /proc/<pid>/task/<tid>/schedstat, summed over the process's threads (a thread that
// starts within a slice counts from zero; one that ends within it loses its last part). Only
// where schedstat is absent does it fall back to utime + stime of /proc/<pid>/stat, which the
// kernel counts in 10 ms ticks: too coarse for a paused program at a few tenths of a percent.
// MIRL_BENCH_SECONDS sets the length of each phase (default 60).
#include "X11TestSession.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <map>
#include <unistd.h>

namespace {

QProcessEnvironment g_env;

bool waitFor(const std::function<bool()>& ready, int timeoutMs) {
    QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        if (ready())
            return true;
        QThread::msleep(100);
    }
    return ready();
}

// Run time of each thread of process `pid` so far, in seconds, by thread id; empty when the
// process is gone. From schedstat (nanoseconds) where the kernel keeps it; otherwise the whole
// process from /proc/<pid>/stat under the id 0.
using ThreadTimes = std::map<qint64, double>;

ThreadTimes threadTimes(qint64 pid) {
    ThreadTimes times;
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(pid));
    for (const QString& tid : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(tasks.filePath(tid + u"/schedstat"));
        if (!file.open(QIODevice::ReadOnly))
            continue; // no schedstat here, or the thread just ended
        bool ok = false;
        const qint64 ns = file.readAll().split(' ').value(0).toLongLong(&ok);
        if (ok)
            times[tid.toLongLong()] = double(ns) / 1e9;
    }
    if (!times.empty())
        return times;
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return times;
    const QByteArray stat = file.readAll();
    // Fields after the command name, which may contain blanks, start after the last ')'.
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    if (fields.size() >= 13) // utime, stime
        times[0] = (fields[11].toDouble() + fields[12].toDouble()) / double(::sysconf(_SC_CLK_TCK));
    return times;
}

// CPU seconds used between two readings: each thread seen at the end from its start reading, or
// from zero when it began in between. -1 when the process was gone at either reading.
double cpuBetween(const ThreadTimes& start, const ThreadTimes& end) {
    if (start.empty() || end.empty())
        return -1;
    double sum = 0;
    for (const auto& [tid, seconds] : end) {
        const auto before = start.find(tid);
        sum += seconds - (before == start.end() ? 0.0 : before->second);
    }
    return sum;
}

bool captureLinked() {
    QProcess dump;
    dump.setProcessEnvironment(g_env);
    dump.start(QStringLiteral("pw-dump"), {QStringLiteral("--no-colors")});
    if (!dump.waitForFinished(5000))
        return false;
    qint64 node = -1;
    const QJsonArray objects = QJsonDocument::fromJson(dump.readAllStandardOutput()).array();
    for (const QJsonValue& value : objects) {
        const QJsonObject props =
            value.toObject().value(u"info").toObject().value(u"props").toObject();
        if (props.value(u"node.name").toString() == u"mirl-pro-capture")
            node = value.toObject().value(u"id").toInteger();
    }
    if (node < 0)
        return false;
    for (const QJsonValue& value : objects) {
        const QJsonObject info = value.toObject().value(u"info").toObject();
        if (value.toObject().value(u"type").toString() == u"PipeWire:Interface:Link" &&
            info.value(u"input-node-id").toInteger() == node)
            return true;
    }
    return false;
}

bool captureNodeExists() {
    QProcess dump;
    dump.setProcessEnvironment(g_env);
    dump.start(QStringLiteral("pw-dump"), {QStringLiteral("--no-colors")});
    return dump.waitForFinished(5000) &&
           dump.readAllStandardOutput().contains("\"mirl-pro-capture\"");
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.empty() ? -1 : v[v.size() / 2];
}

// CPU seconds per minute of each process over the same `seconds`, as the median of the slices.
// A nearly idle process is measured in one slice: its wakes come in bursts of a few seconds.
std::vector<double> measure(const std::vector<qint64>& pids, int seconds, int slices = 5) {
    std::vector<std::vector<double>> perSlice(pids.size());
    const double slice = double(seconds) / slices;
    for (int s = 0; s < slices; ++s) {
        std::vector<ThreadTimes> start;
        for (qint64 pid : pids)
            start.push_back(threadTimes(pid));
        QThread::msleep(qint64(slice * 1000));
        for (size_t i = 0; i < pids.size(); ++i) {
            const double used = cpuBetween(start[i], threadTimes(pids[i]));
            if (used >= 0)
                perSlice[i].push_back(used * 60.0 / slice);
        }
    }
    std::vector<double> result;
    for (auto& values : perSlice)
        result.push_back(values.size() == size_t(slices) ? median(values) : -1);
    return result;
}

void xdotool(const QStringList& args) {
    QProcess::execute(QStringLiteral("xdotool"), args);
}

} // namespace

int main(int argc, char* argv[]) {
    MirlPlayer::Test::X11TestSession screen; // sets DISPLAY for everything started below
    if (!screen.ok()) {
        std::fprintf(stderr, "capture_cpu: no private X server: %s\n", qPrintable(screen.error()));
        return 1;
    }
    g_env = QProcessEnvironment::systemEnvironment();
    QCoreApplication app(argc, argv);
    const int seconds = qEnvironmentVariableIntValue("MIRL_BENCH_SECONDS") > 0
                            ? qEnvironmentVariableIntValue("MIRL_BENCH_SECONDS")
                            : 60;
    const QString source = QStringLiteral(MIRL_SOURCE_DIR);
    const QString mirlBinary = QStringLiteral(MIRL_BINARY);

    QTemporaryDir dir;
    const QString envFile = dir.filePath(QStringLiteral("test-env.sh"));
    QProcess up;
    up.start(source + u"/scripts/test-env", {QStringLiteral("up"), envFile});
    if (!up.waitForFinished(60000) || up.exitCode() != 0) {
        std::fprintf(stderr, "capture_cpu: the player environment did not come up\n%s\n",
                     up.readAllStandardError().constData());
        return 1;
    }
    static const QRegularExpression line(QStringLiteral("^export ([A-Z_]+)='([^']*)'$"));
    for (const QString& text : QString::fromUtf8(up.readAllStandardOutput()).split(u'\n')) {
        const auto m = line.match(text);
        if (m.hasMatch()) {
            g_env.insert(m.captured(1), m.captured(2));
            qputenv(m.captured(1).toLatin1(), m.captured(2).toLocal8Bit());
        }
    }
    auto down = [&] {
        QProcess process;
        process.start(source + u"/scripts/test-env", {QStringLiteral("down"), envFile});
        process.waitForFinished(30000);
    };

    // The program's own settings: set up, listening allowed, the visualizer on.
    const QString config = dir.filePath(QStringLiteral("config"));
    QDir().mkpath(config + u"/MIRL PRO");
    QFile prefs(config + u"/MIRL PRO/preferences.conf");
    prefs.open(QIODevice::WriteOnly);
    prefs.write("[General]\naudioCaptureEnabled=true\nsetupCompleted=true\n"
                "setupAssistantFinished=true\nshowVisualizer=true\nvizID=bars\n");
    prefs.close();
    QProcessEnvironment mirlEnv = g_env;
    mirlEnv.insert(QStringLiteral("XDG_CONFIG_HOME"), config);
    mirlEnv.insert(QStringLiteral("XDG_STATE_HOME"), dir.filePath(QStringLiteral("state")));
    mirlEnv.insert(QStringLiteral("XDG_CACHE_HOME"), dir.filePath(QStringLiteral("cache")));
    mirlEnv.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    mirlEnv.remove(QStringLiteral("NOTCH_DEBUG"));

    QProcess mirl;
    mirl.setProcessEnvironment(mirlEnv);
    mirl.setStandardOutputFile(QProcess::nullDevice());
    mirl.setStandardErrorFile(dir.filePath(QStringLiteral("mirl.log")));
    mirl.start(mirlBinary, {});
    if (!mirl.waitForStarted(5000)) {
        std::fprintf(stderr, "capture_cpu: %s did not start\n", qPrintable(mirlBinary));
        down();
        return 1;
    }
    auto finish = [&](int code) {
        mirl.terminate();
        if (!mirl.waitForFinished(5000))
            mirl.kill();
        mirl.waitForFinished(2000);
        down();
        return code;
    };

    if (!waitFor(captureLinked, 20000)) {
        std::fprintf(stderr, "capture_cpu: the program never captured the player\n");
        return finish(1);
    }
    QThread::sleep(2); // past the start-up work: the first sample, artwork, palette
    xdotool({QStringLiteral("mousemove"), QStringLiteral("0"), QStringLiteral("600")});

    // The baseline listens to the same stream: the null sink's monitor, which carries the player.
    QProcess cava;
    const bool withCava = !QStandardPaths::findExecutable(QStringLiteral("cava")).isEmpty();
    if (withCava) {
        const QString cavaConfig = dir.filePath(QStringLiteral("cava.conf"));
        QFile file(cavaConfig);
        file.open(QIODevice::WriteOnly);
        file.write("[general]\nframerate = 60\nbars = 128\n"
                   "[input]\nmethod = pulse\nsource = mirl-null-sink.monitor\n"
                   "[output]\nmethod = raw\nraw_target = /dev/null\ndata_format = binary\n");
        file.close();
        cava.setProcessEnvironment(g_env);
        cava.setStandardOutputFile(QProcess::nullDevice());
        cava.setStandardErrorFile(dir.filePath(QStringLiteral("cava.log")));
        cava.start(QStringLiteral("cava"), {QStringLiteral("-p"), cavaConfig});
        cava.waitForStarted(5000);
        QThread::sleep(2);
    }
    // The toolkit's own floor: a bare window of the pill's size redrawn as often as levels may
    // arrive, on the same X server in the same seconds.
    QProcess bare;
    bare.setProcessEnvironment(mirlEnv);
    bare.setStandardOutputFile(QProcess::nullDevice());
    bare.setStandardErrorFile(QProcess::nullDevice());
    bare.start(QStringLiteral(MIRL_BARE_WINDOW), {});
    bare.waitForStarted(5000);
    QThread::sleep(1);
    std::printf("capturing the playing player with the resting pill for %d s...\n", seconds);
    std::fflush(stdout);
    std::vector<qint64> pids{mirl.processId(), bare.processId()};
    if (withCava && cava.state() == QProcess::Running)
        pids.push_back(cava.processId());
    const std::vector<double> resting = measure(pids, seconds);
    const double capturing = resting[0];
    const double bareCpu = resting[1];
    const double cavaCpu = resting.size() > 2 ? resting[2] : -1;
    for (QProcess* process : {&cava, &bare}) {
        process->terminate();
        if (!process->waitForFinished(3000))
            process->kill();
    }

    // Onto the pill, which rests at the right end of the top edge: the card opens after 0.22 s.
    xdotool({QStringLiteral("mousemove"), QStringLiteral("1467"), QStringLiteral("50")});
    QThread::sleep(3);
    std::printf("capturing with the card open on the bars visualizer for %d s...\n", seconds);
    std::fflush(stdout);
    const double cardOpen = measure({mirl.processId()}, seconds)[0];
    xdotool({QStringLiteral("mousemove"), QStringLiteral("0"), QStringLiteral("600")});
    QThread::sleep(2);

    QDBusConnection bus = QDBusConnection::connectToBus(
        g_env.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")), QStringLiteral("bench"));
    bus.call(QDBusMessage::createMethodCall(
        QStringLiteral("org.mpris.MediaPlayer2.mpv"), QStringLiteral("/org/mpris/MediaPlayer2"),
        QStringLiteral("org.mpris.MediaPlayer2.Player"), QStringLiteral("Pause")));
    // Paused, the capture stream must be gone: nothing of it may keep running.
    if (!waitFor([] { return !captureNodeExists(); }, 10000)) {
        std::fprintf(stderr, "capture_cpu: the capture stayed up while the player was paused\n");
        return finish(1);
    }
    QThread::sleep(2);
    std::printf("player paused for %d s...\n", seconds);
    std::fflush(stdout);
    const double paused = measure({mirl.processId()}, seconds, 1)[0];
    const int code = finish(0);
    if (capturing < 0 || cardOpen < 0 || paused < 0) {
        std::fprintf(stderr, "capture_cpu: could not read the program's CPU time\n");
        return 1;
    }

    auto percent = [](double perMinute) { return perMinute / 60.0 * 100.0; };
    const double ratio = paused > 0 ? capturing / paused : 0;
    const double ratioToCava = cavaCpu > 0 ? capturing / cavaCpu : -1;
    std::printf("CPU per minute capturing, resting pill: %.3f s (%.2f %% of one core)\n", capturing,
                percent(capturing));
    if (cavaCpu >= 0)
        std::printf("cava on the same stream, same seconds: %.3f s (%.2f %%); ratio %.2f\n",
                    cavaCpu, percent(cavaCpu), ratioToCava);
    else
        std::printf("cava is not installed: no ratio to it\n");
    std::printf("a bare Qt Quick window of the pill's size redrawn 30 times a second, same "
                "seconds: %.3f s (%.2f %%); ratio to cava %.2f\n",
                bareCpu, percent(bareCpu), cavaCpu > 0 ? bareCpu / cavaCpu : -1);
    std::printf("CPU per minute capturing, card open with bars: %.3f s (%.2f %%)\n", cardOpen,
                percent(cardOpen));
    std::printf("CPU per minute with the player paused: %.3f s (%.2f %%)\n", paused,
                percent(paused));
    std::printf("{\"bench\":\"capture_cpu\",\"seconds\":%d,\"cpu_s_per_min_capturing\":%.3f,"
                "\"cpu_s_per_min_cava\":%.3f,\"ratio_to_cava\":%.2f,"
                "\"cpu_s_per_min_bare_window\":%.3f,"
                "\"cpu_s_per_min_card_open_bars\":%.3f,\"cpu_s_per_min_paused\":%.3f,"
                "\"ratio_to_paused\":%.2f}\n",
                seconds, capturing, cavaCpu, ratioToCava, bareCpu, cardOpen, paused, ratio);
    return code;
}
