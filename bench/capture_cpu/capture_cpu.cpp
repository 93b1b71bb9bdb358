// What listening costs: runs the program headless against the private player environment and
// measures the CPU time it uses (user + system, from /proc) per minute, first while it captures
// the playing player, then with the player paused, when nothing of the capture may run. The
// paused figure is the baseline. MIRL_BENCH_SECONDS shortens each phase (default 60).
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
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <unistd.h>

namespace {

QProcessEnvironment g_env = QProcessEnvironment::systemEnvironment();

bool waitFor(const std::function<bool()>& ready, int timeoutMs) {
    QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        if (ready())
            return true;
        QThread::msleep(100);
    }
    return ready();
}

// CPU seconds (user + system) that process `pid` has used so far, or -1.
double cpuSeconds(qint64 pid) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray stat = file.readAll();
    // Fields after the command name, which may contain blanks, start after the last ')'.
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13)
        return -1;
    const double ticks = double(::sysconf(_SC_CLK_TCK));
    return (fields[11].toDouble() + fields[12].toDouble()) / ticks; // utime, stime
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

double measure(qint64 pid, int seconds) {
    const double start = cpuSeconds(pid);
    QThread::sleep(seconds);
    const double end = cpuSeconds(pid);
    if (start < 0 || end < 0)
        return -1;
    return (end - start) * 60.0 / seconds;
}

} // namespace

int main(int argc, char* argv[]) {
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
    prefs.write("[General]\naudioCaptureEnabled=true\nsetupCompleted=true\nshowVisualizer=true\n");
    prefs.close();
    QProcessEnvironment mirlEnv = g_env;
    mirlEnv.insert(QStringLiteral("XDG_CONFIG_HOME"), config);
    mirlEnv.insert(QStringLiteral("XDG_STATE_HOME"), dir.filePath(QStringLiteral("state")));
    mirlEnv.insert(QStringLiteral("XDG_CACHE_HOME"), dir.filePath(QStringLiteral("cache")));
    mirlEnv.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
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
    std::printf("capturing the playing player for %d s...\n", seconds);
    std::fflush(stdout);
    const double capturing = measure(mirl.processId(), seconds);

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
    const double paused = measure(mirl.processId(), seconds);
    const int code = finish(0);
    if (capturing < 0 || paused < 0) {
        std::fprintf(stderr, "capture_cpu: could not read the program's CPU time\n");
        return 1;
    }

    const double ratio = paused > 0 ? capturing / paused : 0;
    std::printf("CPU per minute while capturing: %.3f s (%.2f %% of one core)\n", capturing,
                capturing / 60.0 * 100.0);
    std::printf("CPU per minute with the player paused (baseline): %.3f s (%.2f %%)\n", paused,
                paused / 60.0 * 100.0);
    std::printf("ratio to baseline: %.2f\n", ratio);
    std::printf("{\"bench\":\"capture_cpu\",\"seconds\":%d,\"cpu_s_per_min_capturing\":%.3f,"
                "\"cpu_s_per_min_paused\":%.3f,\"ratio_to_paused\":%.2f}\n",
                seconds, capturing, paused, ratio);
    return code;
}
