// Finding a player's output stream in a listing of the audio graph.
#include "platform/linux/pipewire/PipeWireGraph.h"
#include "platform/linux/pipewire/SystemProcessFacts.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

namespace {

PipeWireObject client(quint32 id, const QString& secPid, const QString& appPid = {}) {
    PipeWireObject object{id, QStringLiteral("PipeWire:Interface:Client"), {}};
    if (!secPid.isNull())
        object.props.insert(QStringLiteral("pipewire.sec.pid"), secPid);
    if (!appPid.isNull())
        object.props.insert(QStringLiteral("application.process.id"), appPid);
    return object;
}

PipeWireObject sandboxed(quint32 id, const QString& secPid, const QString& appPid,
                         const QString& key, const QString& value) {
    PipeWireObject object = client(id, secPid, appPid);
    object.props.insert(key, value);
    return object;
}

// A process table: parents, sandboxes and executables by pid.
struct Table final : ProcessFacts {
    QHash<qint64, qint64> parents;
    QHash<qint64, QString> sandboxes;
    QHash<qint64, QString> binaries;
    qint64 parentOf(qint64 pid) const override { return parents.value(pid); }
    QString sandboxAppID(qint64 pid) const override { return sandboxes.value(pid); }
    QString binaryName(qint64 pid) const override { return binaries.value(pid); }
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
Q_DECLARE_METATYPE(Table)

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
    }
    void findsTheStreamOfAProcess() {
        QFETCH(Objects, objects);
        QFETCH(qint64, pid);
        QFETCH(Found, expected);
        QCOMPARE(findProcessStream(objects, pid), expected);
    }

    // Players whose bus name and sound come from different processes. Player pid 900.
    void findsTheStreamOfASandboxedOrMultiProcessPlayer_data() {
        QTest::addColumn<Objects>("objects");
        QTest::addColumn<Table>("table");
        QTest::addColumn<Found>("expected");
        const QString portal = QStringLiteral("pipewire.access.portal.app_id");
        const QString binary = QStringLiteral("application.process.binary");
        Table chromium;
        chromium.parents = {{905, 901}, {901, 900}, {900, 1}};
        QTest::newRow("audio from a grandchild") << Objects{client(40, "905"), node(41, "40", "42")}
                                                 << chromium << Found(ProcessStream{41, 42});
        QTest::newRow("the player's own stream outranks its child's")
            << Objects{client(40, "905"), node(41, "40", "52"), client(50, "900"),
                       node(51, "50", "42")}
            << chromium << Found(ProcessStream{51, 42});
        Table stranger;
        stranger.parents = {{905, 1}, {900, 1}};
        QTest::newRow("another process tree")
            << Objects{client(40, "905"), node(41, "40", "42")} << stranger << Found();
        Table loop;
        loop.parents = {{905, 906}, {906, 905}};
        QTest::newRow("a parent loop ends")
            << Objects{client(40, "905"), node(41, "40", "42")} << loop << Found();
        // A Flatpak player's bus name is held through a proxy (900) in the player's sandbox; the
        // sound comes through the bridge (77) with a pid of the sandbox's own (2).
        Table flatpak;
        flatpak.sandboxes = {{900, QStringLiteral("com.spotify.Client")}};
        flatpak.binaries = {{900, QStringLiteral("xdg-dbus-proxy")}};
        QTest::newRow("a Flatpak player by its app id")
            << Objects{sandboxed(40, "77", "2", portal, "com.spotify.Client"), node(41, "40", "42"),
                       sandboxed(50, "77", "3", portal, "org.other.App"), node(51, "50", "52")}
            << flatpak << Found(ProcessStream{41, 42});
        Table snap;
        snap.sandboxes = {{900, QStringLiteral("spotify")}, {4100, QStringLiteral("spotify")}};
        QTest::newRow("a native client in the player's sandbox")
            << Objects{client(40, "4100"), node(41, "40", "42")} << snap
            << Found(ProcessStream{41, 42});
        Table sandboxedBinary;
        sandboxedBinary.sandboxes = {{900, QStringLiteral("spotify")}};
        sandboxedBinary.binaries = {{900, QStringLiteral("spotify")}};
        QTest::newRow("a sandboxed player by its executable")
            << Objects{sandboxed(40, "77", "5", binary, "spotify"), node(41, "40", "42")}
            << sandboxedBinary << Found(ProcessStream{41, 42});
        Table plain;
        plain.binaries = {{900, QStringLiteral("mpv")}};
        QTest::newRow("an executable's name alone is no player's")
            << Objects{sandboxed(40, "77", "5", binary, "mpv"), node(41, "40", "42")} << plain
            << Found();
    }
    void findsTheStreamOfASandboxedOrMultiProcessPlayer() {
        QFETCH(Objects, objects);
        QFETCH(Table, table);
        QFETCH(Found, expected);
        QCOMPARE(findProcessStream(objects, 900, &table), expected);
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
        QTest::newRow("Flatpak scope") << "42 (spotify) S 7 42" << QString()
                                       << "0::/user.slice/app-flatpak-com.spotify.Client-1234.scope"
                                       << qint64(7) << "com.spotify.Client";
        QTest::newRow("Snap scope")
            << "42 (spotify) S 7 42" << QString()
            << "0::/user.slice/snap.spotify.spotify-2f1c.scope" << qint64(7) << "spotify";
        QTest::newRow("broken stat")
            << "42 spotify S 7" << QString() << QString() << qint64(0) << QString();
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
