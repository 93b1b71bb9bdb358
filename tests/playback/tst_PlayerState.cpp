#include "fakes/FakePlayerBridge.h"
#include "playback/MusicController.h"
#include "playback/PlayerState.h"
#include "spotify/SpotifyError.h"

#include <QCoro/QCoroTask>

#include <QSignalSpy>
#include <QTest>

using namespace MirlPlayer;

class tst_PlayerState : public QObject {
    Q_OBJECT

    struct Rig {
        ManualClock clock;
        FakePlayerBridge bridge;
        PlayerState state{&bridge, clock};
        void playing(double duration, double position) {
            state.publishDuration(duration);
            state.publishPlaying(true);
            state.setAnchor(position);
        }
    };

private Q_SLOTS:

    void clockStopsAtTheEndOfTheTrack() {
        Rig rig;
        rig.playing(300, 298.9);
        rig.clock.advance(0.5);
        rig.state.tickPosition();
        QCOMPARE(rig.state.clock()->position(), 299.4);
        rig.clock.advance(5);
        rig.state.tickPosition();
        QCOMPARE(rig.state.clock()->position(), 300.0);
        rig.clock.advance(5);
        rig.state.tickPosition();
        QCOMPARE(rig.state.clock()->position(), 300.0);
    }

    void positionTicksOnlyWhileShownAndPlaying() {
        Rig rig;
        rig.state.start();
        rig.playing(300, 10);
        QObject bar, library;
        QVERIFY(!rig.state.positionTicking()); // nothing shows the position
        rig.state.setPositionShown(&bar, true);
        rig.state.setPositionShown(&library, true);
        rig.state.setPositionShown(&bar, false);
        QVERIFY(rig.state.positionTicking()); // the library's bar still shows it
        rig.state.publishPlaying(false);
        QVERIFY(!rig.state.positionTicking());
        rig.state.publishPlaying(true);
        QVERIFY(rig.state.positionTicking());
        rig.state.setPositionShown(&library, false);
        QVERIFY(!rig.state.positionTicking());
        // A reader that comes while nothing ticks still gets the time of now.
        rig.clock.advance(4);
        QCOMPARE(rig.state.livePosition(), 14.0);
    }

    void seekClampsToTrackBounds_data() {
        QTest::addColumn<double>("duration");
        QTest::addColumn<double>("target");
        QTest::addColumn<double>("shown");
        QTest::newRow("before the start") << 200.0 << -5.0 << 0.0;
        QTest::newRow("past the end") << 200.0 << 250.0 << 200.0;
        QTest::newRow("inside") << 200.0 << 42.5 << 42.5;
        QTest::newRow("unknown duration, no upper bound") << 0.0 << 999.0 << 999.0;
    }
    void seekClampsToTrackBounds() {
        QFETCH(double, duration);
        QFETCH(double, target);
        QFETCH(double, shown);
        Rig rig;
        rig.state.publishDuration(duration);
        rig.state.seek(target);
        QCOMPARE(rig.state.clock()->position(), shown);
    }

    void onlyTheNewestSeekReopensTheDoor() {
        Rig rig;
        rig.playing(300, 10);
        rig.state.start();
        rig.state.controller()->merge(track(Source::spotify, "A", true, 10000),
                                      Snapshot::empty(Source::music), rig.clock.now());
        rig.bridge.setSnapshot(track(Source::spotify, "A", true, 10000));

        rig.state.seek(50);
        const QUuid first = *rig.state.pendingSeek();
        rig.state.seek(60);
        const QUuid second = *rig.state.pendingSeek();
        QVERIFY(first != second);

        rig.state.finishSeek(first, 2000);
        QCOMPARE(rig.state.pendingSeek(), std::optional<QUuid>(second));
        QCOMPARE(rig.state.positionPollCutoff(), Clock::distantPast);
        // While the seek is in flight, samples cannot move the clock.
        rig.state.applySample(rig.clock.now() + 1, false, 10);
        QCOMPARE(rig.state.clock()->position(), 60.0);

        rig.state.finishSeek(second, 2000);
        QVERIFY(!rig.state.pendingSeek());
        QCOMPARE(rig.state.positionPollCutoff(), 2000.0);
    }

    void samplesOlderThanTheSeekAreRefused() {
        Rig rig;
        rig.playing(300, 0);
        rig.state.seek(100);
        // No controller: finished at once with the current time as the cutoff.
        const double stamp = rig.state.positionPollCutoff();
        QCOMPARE(stamp, rig.clock.now());
        rig.state.applySample(stamp - 0.010, false, 5);
        QCOMPARE(rig.state.clock()->position(), 100.0);
        rig.state.applySample(stamp, false, 101);
        QCOMPARE(rig.state.clock()->position(), 101.0);
        // The same stamp again: samples may only move forward.
        rig.state.applySample(stamp, false, 7);
        QCOMPARE(rig.state.clock()->position(), 101.0);
    }

    void playHoldRefusesContradictingSamples_data() {
        QTest::addColumn<bool>("startPlaying");
        QTest::addColumn<double>("after");
        QTest::addColumn<bool>("sample");
        QTest::addColumn<bool>("shown");
        // Pause, then a late "playing" sample.
        QTest::newRow("pause, playing within hold") << true << 0.5 << true << false;
        QTest::newRow("pause, playing after hold") << true << 0.9 << true << true;
        // Play, then a late "paused" sample: the button must not flicker.
        QTest::newRow("play, paused within hold") << false << 0.89 << false << true;
        QTest::newRow("play, agreeing sample") << false << 0.1 << true << true;
    }
    void playHoldRefusesContradictingSamples() {
        QFETCH(bool, startPlaying);
        QFETCH(double, after);
        QFETCH(bool, sample);
        QFETCH(bool, shown);
        Rig rig;
        rig.state.publishPlaying(startPlaying);
        rig.state.togglePlayPause();
        QCOMPARE(rig.state.isPlaying(), !startPlaying);
        rig.clock.advance(after);
        rig.state.setPlaying(sample);
        QCOMPARE(rig.state.isPlaying(), shown);
    }

    void playSelectionsAreStrict_data() {
        QTest::addColumn<QString>("track");
        QTest::addColumn<QString>("context");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<bool>("keepsContext");
        QTest::newRow("track in album") << "spotify:track:4uLU6h"
                                        << "spotify:album:1DFixL" << true << true;
        QTest::newRow("liked songs") << "spotify:track:4uLU6h"
                                     << "spotify:user:jo.e-1_x:collection" << true << true;
        QTest::newRow("bad context dropped") << "spotify:track:4uLU6h"
                                             << "spotify:show:1" << true << false;
        QTest::newRow("quote in track") << "spotify:track:a\"b"
                                        << "" << false << false;
        QTest::newRow("trailing newline") << "spotify:track:abc\n"
                                          << "" << false << false;
        QTest::newRow("episode") << "spotify:episode:abc"
                                 << "" << false << false;
    }
    void playSelectionsAreStrict() {
        QFETCH(QString, track);
        QFETCH(QString, context);
        QFETCH(bool, valid);
        QFETCH(bool, keepsContext);
        try {
            SpotifyPlaybackSelection s(track,
                                       context.isEmpty() ? std::nullopt : std::optional(context));
            QVERIFY(valid);
            QCOMPARE(s.contextURI.has_value(), keepsContext);
        } catch (const SpotifyFailure& failure) {
            QVERIFY(!valid);
            QCOMPARE(failure.message, QStringLiteral("This track cannot be played in Spotify."));
        }
    }

    void levelsFadeToRestOnlyWhileSomebodyShowsThem() {
        Rig rig;
        QCOMPARE(rig.state.eqStore()->levels(), QList<double>(128, 0.05));
        QVERIFY(!rig.state.fadeRunning()); // nothing to do at start

        rig.state.noteLevels(QList<double>(128, 0.8));
        rig.state.setNeedsAudio(true);
        QVERIFY(rig.state.fadeRunning());
        QCOMPARE(rig.state.fadeWait(), LevelsStore::fadeHoldoff); // not a tick per 1/30 s
        QCOMPARE(rig.state.lastAudioAt(), rig.clock.now());
        // Live audio holds the fade off.
        rig.clock.advance(0.2);
        QVERIFY(rig.state.tickFade());
        QCOMPARE(rig.state.eqStore()->levels().first(), 0.8);
        // Then the levels sink towards rest, and the fade ends once they have settled.
        rig.clock.advance(0.3);
        int ticks = 0;
        while (rig.state.tickFade() && ticks < 1000) {
            rig.clock.advance(1.0 / 30);
            ++ticks;
        }
        QVERIFY(ticks > 3 && ticks < 1000);
        QVERIFY(qAbs(rig.state.eqStore()->levels().first() - LevelsStore::restingLevel) < 0.01);

        // With nothing showing levels there is nothing to fade.
        rig.state.noteLevels(QList<double>(128, 0.9));
        rig.state.setNeedsAudio(false);
        rig.clock.advance(2);
        QVERIFY(!rig.state.tickFade());
        QCOMPARE(rig.state.eqStore()->levels().first(), 0.9);
    }
};

QTEST_MAIN(tst_PlayerState)
#include "tst_PlayerState.moc"
