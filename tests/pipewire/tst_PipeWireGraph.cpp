// Finding a player's output stream in a listing of the audio graph.
#include "platform/linux/pipewire/PipeWireGraph.h"
#include "platform/linux/pipewire/SystemProcessFacts.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

namespace {

PipeWireObject client(quint32 id, const QString& secPid, const QString& appPid = {},
                      const QHash<QString, QString>& more = {}) {
    PipeWireObject object{id, QStringLiteral("PipeWire:Interface:Client"), more};
    if (!secPid.isNull())
        object.props.insert(QStringLiteral("pipewire.sec.pid"), secPid);
    if (!appPid.isNull())
        object.props.insert(QStringLiteral("application.process.id"), appPid);
    return object;
}

// The processes: a browser (900) playing from its grandchild (905); a Flatpak player's bus proxy
// (910); a Snap player (920) with a native client of its own (4100); a plain mpv (930).
struct World final : ProcessFacts {
    qint64 parentOf(qint64 pid) const override {
        return QHash<qint64, qint64>{{905, 901}, {901, 900}, {900, 1}}.value(pid);
    }
    QString sandboxAppID(qint64 pid) const override {
        return QHash<qint64, QString>{
            {910, "com.spotify.Client"}, {920, "spotify"}, {4100, "spotify"}}
            .value(pid);
    }
    QString binaryName(qint64 pid) const override {
        return QHash<qint64, QString>{{910, "xdg-dbus-proxy"}, {920, "spotify"}, {930, "mpv"}}
            .value(pid);
    }
};

PipeWireObject node(quint32 id, const QString& clientID, const QString& serial,
                    const QString& mediaClass = QStringLiteral("Stream/Output/Audio")) {
    return {id,
            QStringLiteral("PipeWire:Interface:Node"),
            {{QStringLiteral("client.id"), clientID},
             {QStringLiteral("object.serial"), serial},
             {QStringLiteral("media.class"), mediaClass}}};
}

using Objects = std::vector<PipeWireObject>;
using Found = std::optional<ProcessStream>;

} // namespace

Q_DECLARE_METATYPE(Objects)
Q_DECLARE_METATYPE(Found)

class tst_PipeWireGraph : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void findsTheStreamOfAProcess_data() {
        QTest::addColumn<Objects>("objects");
        QTest::addColumn<qint64>("pid");
        QTest::addColumn<Found>("expected");

        // The serial, not the id, is what a link target names.
        QTest::newRow("own client") << Objects{client(40, "900"), node(41, "40", "42")}
                                    << qint64(900) << Found(ProcessStream{41, 42});
        QTest::newRow("another process's stream")
            << Objects{client(40, "900"), node(41, "40", "42")} << qint64(901) << Found();
        QTest::newRow("sinks, sources and input streams are not played sound")
            << Objects{client(40, "900"), node(41, "40", "42", "Audio/Sink"),
                       node(43, "40", "44", "Stream/Input/Audio"),
                       node(45, "40", "46", "Audio/Source")}
            << qint64(900) << Found();
        QTest::newRow("of two streams the newest")
            << Objects{client(40, "900"), node(41, "40", "52"), node(47, "40", "48")} << qint64(900)
            << Found(ProcessStream{41, 52});
        QTest::newRow("through a sound server bridge by the declared pid")
            << Objects{client(40, "77", "900"), node(41, "40", "42")} << qint64(900)
            << Found(ProcessStream{41, 42});
        QTest::newRow("the checked pid outranks a declared one")
            << Objects{client(30, "77", "900"), node(31, "30", "90"), client(40, "900"),
                       node(41, "40", "42")}
            << qint64(900) << Found(ProcessStream{41, 42});
        QTest::newRow("broken numbers are skipped")
            << Objects{client(40, "nine"), node(41, "40", "42"), client(50, "900"),
                       node(51, "fifty", "52"), node(53, "50", "x")}
            << qint64(900) << Found();
        QTest::newRow("no pid") << Objects{client(40, "0"), node(41, "40", "42")} << qint64(0)
                                << Found();
        QTest::newRow("empty graph") << Objects{} << qint64(900) << Found();

        // Players whose bus name and sound come from different processes.
        const QString portal = QStringLiteral("pipewire.access.portal.app_id");
        const QString binary = QStringLiteral("application.process.binary");
        QTest::newRow("audio from a grandchild") << Objects{client(40, "905"), node(41, "40", "42")}
                                                 << qint64(900) << Found(ProcessStream{41, 42});
        QTest::newRow("the player's own stream outranks its child's")
            << Objects{client(40, "905"), node(41, "40", "52"), client(50, "900"),
                       node(51, "50", "42")}
            << qint64(900) << Found(ProcessStream{51, 42});
        // Through the bridge (77) with pids of the sandbox's own (2, 3).
        QTest::newRow("a Flatpak player by its app id")
            << Objects{client(40, "77", "2", {{portal, "com.spotify.Client"}}),
                       node(41, "40", "42"), client(50, "77", "3", {{portal, "org.other.App"}}),
                       node(51, "50", "52")}
            << qint64(910) << Found(ProcessStream{41, 42});
        QTest::newRow("a native client in the player's sandbox")
            << Objects{client(40, "4100"), node(41, "40", "42")} << qint64(920)
            << Found(ProcessStream{41, 42});
        QTest::newRow("a sandboxed player by its executable")
            << Objects{client(40, "77", "5", {{binary, "spotify"}}), node(41, "40", "42")}
            << qint64(920) << Found(ProcessStream{41, 42});
        QTest::newRow("an executable's name alone is no player's")
            << Objects{client(40, "77", "5", {{binary, "mpv"}}), node(41, "40", "42")}
            << qint64(930) << Found();
    }
    void findsTheStreamOfAProcess() {
        QFETCH(Objects, objects);
        QFETCH(qint64, pid);
        QFETCH(Found, expected);
        const World world;
        QCOMPARE(findProcessStream(objects, pid, &world), expected);
    }

    // The process table read from files laid out as the kernel's.
    void readsTheProcessTable_data() {
        QTest::addColumn<QString>("stat");
        QTest::addColumn<QString>("flatpakInfo");
        QTest::addColumn<QString>("cgroup");
        QTest::addColumn<qint64>("parent");
        QTest::addColumn<QString>("sandbox");
        QTest::newRow("a name with spaces and parentheses")
            << "42 (Web (Content) 1) S 41 42 42 0" << QString() << "0::/user.slice/app.slice"
            << qint64(41) << QString();
        QTest::newRow("Flatpak info")
            << "42 (spotify) S 7 42"
            << "[Application]\nname=com.spotify.Client\nruntime=x\n"
            << "0::/app-flatpak-org.other-3.scope" << qint64(7) << "com.spotify.Client";
        QTest::newRow("Snap scope")
            << "42 (spotify) S 7 42" << QString()
            << "0::/user.slice/snap.spotify.spotify-2f1c.scope" << qint64(7) << "spotify";
    }
    void readsTheProcessTable() {
        QFETCH(QString, stat);
        QFETCH(QString, flatpakInfo);
        QFETCH(QString, cgroup);
        QFETCH(qint64, parent);
        QFETCH(QString, sandbox);
        QTemporaryDir root;
        QVERIFY(QDir(root.path()).mkpath(QStringLiteral("42/root")));
        const auto write = [&](const QString& name, const QString& text) {
            QFile file(root.filePath(u"42/" + name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(text.toUtf8());
        };
        write(QStringLiteral("stat"), stat);
        write(QStringLiteral("cgroup"), cgroup);
        if (!flatpakInfo.isNull())
            write(QStringLiteral("root/.flatpak-info"), flatpakInfo);
        const SystemProcessFacts facts(root.path());
        QCOMPARE(facts.parentOf(42), parent);
        QCOMPARE(facts.sandboxAppID(42), sandbox);
        QCOMPARE(facts.parentOf(43), qint64(0));
    }
};

QTEST_GUILESS_MAIN(tst_PipeWireGraph)
#include "tst_PipeWireGraph.moc"
