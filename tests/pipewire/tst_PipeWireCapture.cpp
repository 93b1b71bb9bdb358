// Captures real players in a private PipeWire session: the capture hears the player it was
// pointed at and nothing else, links to that player's node alone, and ends when it goes.
#include "PrivateAudioSession.h"
#include "platform/linux/pipewire/PipeWireCapture.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <cmath>
#include <mutex>
#include <numbers>

using namespace MirlPlayer;
using MirlPlayer::Testing::PrivateAudioSession;

namespace {

// Power of one frequency in a signal (Goertzel), normalised by length.
double powerAt(const std::vector<float>& mono, double hz, double rate) {
    const double w = 2.0 * std::numbers::pi * hz / rate;
    const double coeff = 2.0 * std::cos(w);
    double s1 = 0;
    double s2 = 0;
    for (float x : mono) {
        const double s0 = x + coeff * s1 - s2;
        s2 = s1;
        s1 = s0;
    }
    const double power = s1 * s1 + s2 * s2 - coeff * s1 * s2;
    return power / double(mono.size() * mono.size());
}

// Collects what the backend delivers, from its thread.
struct Collector {
    std::mutex mutex;
    std::vector<float> left;
    std::vector<CaptureFormat> formats;
    std::vector<quint64> ended;
    quint64 blocks = 0;

    void attach(CaptureBackend& backend) {
        backend.setBlockHandler([this](const CaptureBlock& block) {
            std::lock_guard lock(mutex);
            ++blocks;
            if (formats.empty() || !(formats.back() == block.format))
                formats.push_back(block.format);
            for (quint32 f = 0; f < block.frames; ++f)
                left.push_back(block.samples[std::size_t(f) * block.format.channels]);
        });
        backend.setEndedHandler([this](quint64 id) {
            std::lock_guard lock(mutex);
            ended.push_back(id);
        });
    }
    std::size_t frames() {
        std::lock_guard lock(mutex);
        return left.size();
    }
    quint64 blockCount() {
        std::lock_guard lock(mutex);
        return blocks;
    }
    std::vector<quint64> endedIDs() {
        std::lock_guard lock(mutex);
        return ended;
    }
};

QJsonObject nodeNamed(const QJsonArray& dump, const QString& name) {
    for (const QJsonValue& value : dump) {
        const QJsonObject object = value.toObject();
        if (object.value(u"type").toString() == u"PipeWire:Interface:Node" &&
            object.value(u"info").toObject().value(u"props").toObject().value(u"node.name") == name)
            return object;
    }
    return {};
}

// The output nodes linked into node `input`.
QList<qint64> sourcesOf(const QJsonArray& dump, qint64 input) {
    QList<qint64> sources;
    for (const QJsonValue& value : dump) {
        const QJsonObject object = value.toObject();
        if (object.value(u"type").toString() != u"PipeWire:Interface:Link")
            continue;
        const QJsonObject info = object.value(u"info").toObject();
        if (info.value(u"input-node-id").toInteger() == input)
            sources.append(info.value(u"output-node-id").toInteger());
    }
    return sources;
}

qint64 streamNodeOf(const QJsonArray& dump, qint64 pid) {
    QList<qint64> clients;
    for (const QJsonValue& value : dump) {
        const QJsonObject object = value.toObject();
        const QJsonObject props = object.value(u"info").toObject().value(u"props").toObject();
        if (object.value(u"type").toString() == u"PipeWire:Interface:Client" &&
            props.value(u"pipewire.sec.pid").toInteger() == pid)
            clients.append(object.value(u"id").toInteger());
    }
    for (const QJsonValue& value : dump) {
        const QJsonObject object = value.toObject();
        const QJsonObject props = object.value(u"info").toObject().value(u"props").toObject();
        if (object.value(u"type").toString() == u"PipeWire:Interface:Node" &&
            props.value(u"media.class").toString() == u"Stream/Output/Audio" &&
            clients.contains(props.value(u"client.id").toInteger()))
            return object.value(u"id").toInteger();
    }
    return -1;
}

const QString captureNodeName = QStringLiteral("mirl-pro-capture");

// The output nodes linked into the capture's node; none while there is no such node.
QList<qint64> captureSources(const QJsonArray& dump) {
    const qint64 node = nodeNamed(dump, captureNodeName).value(u"id").toInteger(-1);
    return node >= 0 ? sourcesOf(dump, node) : QList<qint64>{};
}

// The program's own connections to the sound server.
int connectionsOfThisProgram(const QJsonArray& dump) {
    return int(std::count_if(dump.begin(), dump.end(), [](const QJsonValue& value) {
        return value[u"info"][u"props"][u"application.id"].toString() == u"com.kestrova.mirlpro" &&
               value[u"type"].toString() == u"PipeWire:Interface:Client";
    }));
}

// The backend learns the graph on its own thread; a lookup answers from what it knows so far.
quint64 lookUp(PipeWireCapture& capture, qint64 pid) {
    quint64 object = 0;
    (void)QTest::qWaitFor([&] { return (object = capture.audioObject(pid)) != 0; }, 5000);
    return object;
}

} // namespace

class tst_PipeWireCapture : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PrivateAudioSession> m_session;

private Q_SLOTS:
    void initTestCase() {
        m_session = std::make_unique<PrivateAudioSession>();
        if (!m_session->start())
            QFAIL(qPrintable(u"private audio session: " + m_session->error()));
    }
    void cleanupTestCase() { m_session.reset(); }

    void hearsThePlayerAloneWhileAnotherAppPlays() {
        const qint64 player = m_session->startTone(220);
        const qint64 other = m_session->startTone(3000);
        QVERIFY(m_session->waitForStreamOf(player));
        QVERIFY(m_session->waitForStreamOf(other));

        PipeWireCapture capture;
        Collector collector;
        collector.attach(capture);
        const quint64 object = lookUp(capture, player);
        QVERIFY(object != 0);
        const auto result = capture.startCapture(object);
        QVERIFY(std::holds_alternative<CaptureBackend::Started>(result));
        QCOMPARE(std::get<CaptureBackend::Started>(result).format,
                 PipeWireCapture::requestedFormat());

        QTRY_VERIFY_WITH_TIMEOUT(collector.frames() >= 4800, 8000);
        {
            std::lock_guard lock(collector.mutex);
            QCOMPARE(collector.formats.size(), std::size_t(1));
            QCOMPARE(collector.formats.front(), PipeWireCapture::requestedFormat());
        }

        // The capture's only source is the player's own node (what it hears, through the
        // analysis, tst_CapturePipeline checks).
        const qint64 playerNode = streamNodeOf(m_session->dump(), player);
        QVERIFY(playerNode >= 0);
        QJsonArray graph = m_session->dump();
        const QList<qint64> sources = captureSources(graph);
        QVERIFY(!sources.isEmpty());
        for (qint64 source : sources)
            QCOMPARE(source, playerNode);
        // The player is still heard: its own link to the output stays.
        const qint64 sink =
            nodeNamed(graph, QStringLiteral("mirl-null-sink")).value(u"id").toInteger();
        QVERIFY(sourcesOf(graph, sink).contains(playerNode));

        capture.teardown();
        QVERIFY(!capture.hasStream());
        QVERIFY(nodeNamed(m_session->dump(), captureNodeName).isEmpty());
        m_session->stopPlayer(player);
        m_session->stopPlayer(other);
    }

    void endsWhenThePlayerGoesAndNeverFallsBack() {
        const qint64 other = m_session->startTone(3000);
        const qint64 player = m_session->startTone(440);
        QVERIFY(m_session->waitForStreamOf(player));
        QVERIFY(m_session->waitForStreamOf(other));

        PipeWireCapture capture;
        Collector collector;
        collector.attach(capture);
        const auto result = capture.startCapture(lookUp(capture, player));
        QVERIFY(std::holds_alternative<CaptureBackend::Started>(result));
        const quint64 id = std::get<CaptureBackend::Started>(result).captureID;
        QTRY_VERIFY_WITH_TIMEOUT(collector.blockCount() > 10, 8000);

        m_session->stopPlayer(player);
        QTRY_COMPARE_WITH_TIMEOUT(collector.endedIDs(), std::vector<quint64>{id}, 3000);
        const quint64 blocksAtEnd = collector.blockCount();
        QTest::qWait(1500);
        // Nothing else was linked in its place, and nothing more was delivered.
        QVERIFY(captureSources(m_session->dump()).isEmpty());
        QCOMPARE(collector.blockCount(), blocksAtEnd);
        QCOMPARE(collector.endedIDs().size(), std::size_t(1));

        capture.teardown();
        QVERIFY(nodeNamed(m_session->dump(), captureNodeName).isEmpty());
        m_session->stopPlayer(other);
    }

    void aMissingTargetIsNeverReplacedByAnotherSource() {
        const qint64 other = m_session->startTone(3000);
        QVERIFY(m_session->waitForStreamOf(other));
        PipeWireCapture capture;
        Collector collector;
        collector.attach(capture);
        // A serial that names nothing in the graph.
        const auto result = capture.startCapture(987654);
        if (std::holds_alternative<CaptureBackend::Started>(result)) {
            QTest::qWait(1500);
            QVERIFY(captureSources(m_session->dump()).isEmpty());
            QCOMPARE(collector.blockCount(), quint64(0));
        }
        capture.teardown();
        m_session->stopPlayer(other);
    }

    void hearsAPlayerThatPlaysThroughThePulseBridge() {
        if (!m_session->hasPulseBridge())
            QSKIP("pipewire-pulse is not installed");
        const qint64 player = m_session->startTone(330, QStringLiteral("pulse"));
        QVERIFY(m_session->waitForStreamOf(player));
        PipeWireCapture capture;
        Collector collector;
        collector.attach(capture);
        const quint64 object = lookUp(capture, player);
        QVERIFY(object != 0);
        QVERIFY(std::holds_alternative<CaptureBackend::Started>(capture.startCapture(object)));
        QTRY_VERIFY_WITH_TIMEOUT(collector.frames() >= 16384, 8000);
        {
            std::lock_guard lock(collector.mutex);
            const std::vector<float> tail(collector.left.end() - 16384, collector.left.end());
            QVERIFY(powerAt(tail, 330, 48000) > 1e-4);
        }
        capture.teardown();
        m_session->stopPlayer(player);
    }

    void withoutASoundServerNothingIsFoundAndNothingStarts() {
        QTemporaryDir empty;
        const QByteArray saved = qgetenv("XDG_RUNTIME_DIR");
        qputenv("XDG_RUNTIME_DIR", empty.path().toUtf8());
        PipeWireCapture capture;
        const quint64 object = capture.audioObject(qint64(QCoreApplication::applicationPid()));
        const auto result = capture.startCapture(42);
        qputenv("XDG_RUNTIME_DIR", saved);
        QCOMPARE(object, quint64(0));
        QVERIFY(std::holds_alternative<CaptureBackend::Failure>(result));
        QCOMPARE(std::get<CaptureBackend::Failure>(result).step, QStringLiteral("ConnectServer"));
        QVERIFY(!capture.hasStream());
    }

    // While captures are wanted one connection serves every lookup and capture; a player that
    // starts later is announced, and nothing is left once captures are no longer wanted.
    void oneConnectionWhileWantedAndNoneAfter() {
        PipeWireCapture capture;
        std::atomic<int> changes = 0;
        capture.setChangedHandler([&changes] { ++changes; });
        capture.setWanted(true);
        QTRY_VERIFY_WITH_TIMEOUT(changes > 0, 5000); // the whole graph is known now
        QCOMPARE(connectionsOfThisProgram(m_session->dump()), 1);
        const int before = changes;
        const qint64 player = m_session->startTone(550); // a child of this process
        QTRY_VERIFY_WITH_TIMEOUT(changes > before, 5000);
        // The first change may be the player's client, before its stream is in the graph.
        QTRY_VERIFY_WITH_TIMEOUT(capture.audioObject(player) != 0, 5000);
        // Every player descends from the first process, as this program does: no player's
        // parent. Nor are a pid that names nothing, or none.
        for (const qint64 pid : {qint64(1), qint64(4194000), qint64(-1)})
            QCOMPARE(capture.audioObject(pid), quint64(0));
        for (int round = 0; round < 3; ++round) {
            const quint64 object = capture.audioObject(player);
            QVERIFY(object != 0);
            QVERIFY(std::holds_alternative<CaptureBackend::Started>(capture.startCapture(object)));
            capture.teardown();
        }
        const QJsonArray graph = m_session->dump();
        QCOMPARE(connectionsOfThisProgram(graph), 1);
        QVERIFY(nodeNamed(graph, captureNodeName).isEmpty());
        capture.setWanted(false);
        QCOMPARE(connectionsOfThisProgram(m_session->dump()), 0);
        m_session->stopPlayer(player);
    }
};

QTEST_GUILESS_MAIN(tst_PipeWireCapture)
#include "tst_PipeWireCapture.moc"
