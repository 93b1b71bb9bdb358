// Finding a process's output stream in a listing of the audio graph.
#include "platform/linux/pipewire/PipeWireGraph.h"

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
    }
    void findsTheStreamOfAProcess() {
        QFETCH(Objects, objects);
        QFETCH(qint64, pid);
        QFETCH(Found, expected);
        QCOMPARE(findProcessStream(objects, pid), expected);
    }
};

QTEST_GUILESS_MAIN(tst_PipeWireGraph)
#include "tst_PipeWireGraph.moc"
