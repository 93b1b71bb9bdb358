#include "platform/linux/service/MirlBusService.h"
#include "support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusInterface>
#include <QDBusMetaType>
#include <QDBusReply>
#include <QDBusVariant>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

using namespace MirlPlayer;

// The now-playing model as the service sees it: properties with change signals.
class StandInModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString title MEMBER m_title NOTIFY titleChanged)
    Q_PROPERTY(QString artist MEMBER m_artist NOTIFY artistChanged)
    Q_PROPERTY(QString album MEMBER m_album NOTIFY albumChanged)
    Q_PROPERTY(QString sourceName MEMBER m_sourceName NOTIFY sourceNameChanged)
    Q_PROPERTY(bool isPlaying MEMBER m_isPlaying NOTIFY isPlayingChanged)
    Q_PROPERTY(double duration MEMBER m_duration NOTIFY durationChanged)
    Q_PROPERTY(QString trackURI MEMBER m_trackURI NOTIFY trackURIChanged)
public:
    QString m_title = QStringLiteral("Nothing Playing");
    QString m_artist = QStringLiteral("Open Spotify or your music player");
    QString m_album, m_sourceName, m_trackURI;
    bool m_isPlaying = false;
    double m_duration = 0;
Q_SIGNALS:
    void titleChanged();
    void artistChanged();
    void albumChanged();
    void sourceNameChanged();
    void isPlayingChanged();
    void durationChanged();
    void trackURIChanged();
};

class StandInClock : public QObject {
    Q_OBJECT
    Q_PROPERTY(double position MEMBER m_position NOTIFY positionChanged)
public:
    double m_position = 0;
Q_SIGNALS:
    void positionChanged();
};

// What the program hears: the capture's status row and the level store.
class StandInCapture : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString status MEMBER m_status NOTIFY statusChanged)
    Q_PROPERTY(bool needsAttention MEMBER m_needsAttention NOTIFY needsAttentionChanged)
public:
    QString m_status = QStringLiteral("Music access is off");
    bool m_needsAttention = false;
Q_SIGNALS:
    void statusChanged();
    void needsAttentionChanged();
};

class StandInLevels : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<double> levels MEMBER m_levels)
public:
    QList<double> m_levels = QList<double>(128, 0.05);
};

// Receives PropertiesChanged.
class Listener : public QObject {
    Q_OBJECT
public:
    QList<QVariantMap> changes;
public Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& changed,
                           const QStringList&) {
        if (interface == u"com.kestrova.mirlpro")
            changes.append(changed);
    }
};

class tst_MirlBusService : public QObject {
    Q_OBJECT
    MirlTest::PrivateBus m_bus;

    QVariant read(const QDBusConnection& client, const QString& name) {
        QDBusMessage get =
            QDBusMessage::createMethodCall("com.kestrova.mirlpro", "/com/kestrova/mirlpro",
                                           "org.freedesktop.DBus.Properties", "Get");
        get << QStringLiteral("com.kestrova.mirlpro") << name;
        const QDBusMessage reply = client.call(get, QDBus::BlockWithGui, 2000);
        if (reply.type() != QDBusMessage::ReplyMessage)
            return {};
        return reply.arguments().constFirst().value<QDBusVariant>().variant();
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(!m_bus.address().isEmpty()); }

    void readsAnswerWithTheLiveModel() {
        StandInModel model;
        StandInClock clock;
        MirlBusService service(&model, &clock);
        QVERIFY(service.registerOn(m_bus.connect("service1")));
        const auto client = m_bus.connect("client1");
        QCOMPARE(read(client, "title").toString(), QStringLiteral("Nothing Playing"));
        model.m_title = QStringLiteral("First Light");
        clock.m_position = 12.5;
        model.m_duration = 45;
        QCOMPARE(read(client, "title").toString(), QStringLiteral("First Light"));
        QCOMPARE(read(client, "position").toDouble(), 12.5);
        QCOMPARE(read(client, "duration").toDouble(), 45.0);
        QCOMPARE(read(client, "isPlaying").toBool(), false);
        QCOMPARE(read(client, "trackURI").toString(), QString());
        QDBusMessage getAll =
            QDBusMessage::createMethodCall("com.kestrova.mirlpro", "/com/kestrova/mirlpro",
                                           "org.freedesktop.DBus.Properties", "GetAll");
        getAll << QStringLiteral("com.kestrova.mirlpro");
        const QDBusMessage all = client.call(getAll, QDBus::BlockWithGui, 2000);
        QCOMPARE(qdbus_cast<QVariantMap>(all.arguments().value(0)).value("title"),
                 QVariant("First Light"));
        QDBusConnection::disconnectFromBus("service1");
        QDBusConnection::disconnectFromBus("client1");
    }

    void whatTheProgramHearsIsReadable() {
        StandInModel model;
        StandInClock clock;
        StandInCapture capture;
        StandInLevels levels;
        MirlBusService service(&model, &clock);
        service.setAudioSources(&capture, &levels);
        QVERIFY(service.registerOn(m_bus.connect("service5")));
        QDBusConnection client = m_bus.connect("client5");
        Listener listener;
        QVERIFY(client.connect(QString(), "/com/kestrova/mirlpro",
                               "org.freedesktop.DBus.Properties", "PropertiesChanged", &listener,
                               SLOT(propertiesChanged(QString, QVariantMap, QStringList))));

        QCOMPARE(read(client, "captureStatus").toString(), QStringLiteral("Music access is off"));
        levels.m_levels[3] = 0.75;
        const QVariant reply = read(client, "levels");
        QVERIFY(reply.canConvert<QDBusArgument>());
        const auto heard = qdbus_cast<QList<double>>(reply.value<QDBusArgument>());
        QCOMPARE(heard.size(), 128);
        QCOMPARE(heard.at(3), 0.75);

        capture.m_status = QStringLiteral("Open Spotify and play a song.");
        capture.m_needsAttention = true;
        Q_EMIT capture.statusChanged();
        Q_EMIT capture.needsAttentionChanged();
        QTRY_COMPARE(listener.changes.size(), 1);
        QCOMPARE(listener.changes.first(),
                 (QVariantMap{{"captureStatus", "Open Spotify and play a song."},
                              {"captureNeedsAttention", true}}));
        QCOMPARE(read(client, "captureNeedsAttention").toBool(), true);
        QDBusConnection::disconnectFromBus("service5");
        QDBusConnection::disconnectFromBus("client5");
    }

    void changesGoOutTogetherAndOnlyWhenTheyDiffer() {
        StandInModel model;
        StandInClock clock;
        MirlBusService service(&model, &clock);
        QVERIFY(service.registerOn(m_bus.connect("service2")));
        auto client = m_bus.connect("client2");
        Listener listener;
        QVERIFY(client.connect("", "/com/kestrova/mirlpro", "org.freedesktop.DBus.Properties",
                               "PropertiesChanged", &listener,
                               SLOT(propertiesChanged(QString, QVariantMap, QStringList))));

        // A track change: several properties in one turn.
        model.m_title = "First Light";
        Q_EMIT model.titleChanged();
        model.m_artist = "Mirl Test Ensemble";
        Q_EMIT model.artistChanged();
        model.m_isPlaying = true;
        Q_EMIT model.isPlayingChanged();
        model.m_trackURI = "spotify:track:abc";
        Q_EMIT model.trackURIChanged();
        QTRY_COMPARE(listener.changes.size(), 1);
        QCOMPARE(listener.changes.first(), (QVariantMap{{"title", "First Light"},
                                                        {"artist", "Mirl Test Ensemble"},
                                                        {"isPlaying", true},
                                                        {"trackURI", "spotify:track:abc"}}));

        // A notification without a real change, and the moving clock, say nothing.
        Q_EMIT model.albumChanged();
        clock.m_position = 3;
        Q_EMIT clock.positionChanged();
        model.m_duration = 200;
        Q_EMIT model.durationChanged();
        QTRY_COMPARE(listener.changes.size(), 2);
        QCOMPARE(listener.changes.last(), (QVariantMap{{"duration", 200.0}}));

        QDBusConnection::disconnectFromBus("service2");
        QDBusConnection::disconnectFromBus("client2");
    }

    void aSecondInstanceDoesNotTakeTheName() {
        StandInModel model;
        StandInClock clock;
        MirlBusService first(&model, &clock);
        MirlBusService second(&model, &clock);
        QVERIFY(first.registerOn(m_bus.connect("service3")));
        QVERIFY(!second.registerOn(m_bus.connect("service4")));
        QVERIFY(!second.registerOn(QDBusConnection(QString())));
        QDBusConnection::disconnectFromBus("service3");
        QDBusConnection::disconnectFromBus("service4");
    }

    // The running copy holds the name: a second launch of the program asks it to do what a
    // reopen does and leaves, successfully.
    void aSecondLaunchHandsTheReopenToTheRunningCopy() {
        StandInModel model;
        StandInClock clock;
        MirlBusService running(&model, &clock);
        QVERIFY(running.registerOn(m_bus.connect("service6")));
        QSignalSpy reopened(&running, &MirlBusService::reopenRequested);
        QProcess second;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
        env.insert("QT_QPA_PLATFORM", "offscreen");
        second.setProcessEnvironment(env);
        second.start(QStringLiteral(MIRL_PROGRAM), {});
        QTRY_COMPARE_WITH_TIMEOUT(reopened.size(), 1, 10000);
        QTRY_COMPARE_WITH_TIMEOUT(second.state(), QProcess::NotRunning, 5000);
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
        QDBusConnection::disconnectFromBus("service6");
    }

    // Any text is a request for Settings (the delegate tells page titles from the rest); a call
    // of the wrong shape is refused and opens nothing.
    void openSettingsTakesOneText() {
        StandInModel model;
        MirlBusService service(&model, nullptr);
        QVERIFY(service.registerOn(m_bus.connect("service7")));
        QSignalSpy asked(&service, &MirlBusService::openSettingsRequested);
        const auto call = [&](const QVariantList& args) {
            QDBusMessage m =
                QDBusMessage::createMethodCall("com.kestrova.mirlpro", "/com/kestrova/mirlpro",
                                               "com.kestrova.mirlpro", "openSettings");
            m.setArguments(args);
            return m_bus.connect("client7").call(m, QDBus::BlockWithGui, 2000).type();
        };
        QCOMPARE(call({QStringLiteral("Audio")}), QDBusMessage::ReplyMessage);
        QCOMPARE(call({42}), QDBusMessage::ErrorMessage);
        QCOMPARE(call({}), QDBusMessage::ErrorMessage);
        QCOMPARE(asked.size(), 1);
        QCOMPARE(asked.first().first().toString(), QStringLiteral("Audio"));
        QDBusConnection::disconnectFromBus("service7");
        QDBusConnection::disconnectFromBus("client7");
    }

    void aGoneModelReadsAsEmpty() {
        auto model = std::make_unique<StandInModel>();
        MirlBusService service(model.get(), nullptr);
        model->m_title = "x";
        QCOMPARE(service.value("title").toString(), QStringLiteral("x"));
        model.reset();
        QCOMPARE(service.value("title").toString(), QString());
        QCOMPARE(service.value("position").toDouble(), 0.0);
    }
};

QTEST_GUILESS_MAIN(tst_MirlBusService)
#include "tst_MirlBusService.moc"
