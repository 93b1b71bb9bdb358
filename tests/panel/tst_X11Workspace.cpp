// The frontmost application and activation events on a real X server.
#include "X11TestMain.h"
#include "platform/linux/x11/X11Workspace.h"

#include <QGuiApplication>
#include <QTest>

using namespace MirlPlayer;
using MirlPlayer::Test::ForeignWindow;

class tst_X11Workspace : public QObject {
    Q_OBJECT
private Q_SLOTS:

    void theActiveWindowNamesTheFrontmostApplicationAndAnnouncesIt() {
        X11Workspace workspace;
        QList<Workspace::Application> activated;
        workspace.setActivationHandler([&](Workspace::Event e, const Workspace::Application& app) {
            if (e == Workspace::Event::activated)
                activated << app;
        });
        ForeignWindow player(QRect(0, 0, 300, 200), ForeignWindow::Options::ofClass("Spotify"));
        player.activate();
        QTRY_COMPARE(activated.size(), 1);
        QCOMPARE(activated.first().id, QStringLiteral("com.spotify.client"));
        QCOMPARE(activated.first().pid, 99999);
        QCOMPARE(workspace.frontmost().id, QStringLiteral("com.spotify.client"));

        // Activating the same application again is no new activation.
        player.activate();
        ForeignWindow editor(QRect(0, 0, 300, 200), ForeignWindow::Options::ofClass("Editor"));
        editor.activate();
        QTRY_COMPARE(activated.size(), 2);
        QCOMPARE(activated.last().id, QStringLiteral("Editor"));
    }
};

MIRL_X11_TEST_MAIN(tst_X11Workspace)

#include "tst_X11Workspace.moc"
