#include "app/Feedback.h"

#include <QTest>

using namespace MirlPlayer;

class tst_Feedback : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void mailIsEncodedWhole_data() {
        QTest::addColumn<bool>("idea");
        QTest::addColumn<QString>("url");
        QTest::newRow("problem")
            << false
            << "mailto:help@example.org?subject=MIRL%20PRO%20problem%20report&body=What%20happened"
               "%3F%0A%0A%0AWhat%20did%20you%20expect%20to%20happen%3F%0A%0A%0ASteps%20to%20make%20"
               "it%20happen%20again%20%28if%20you%20know%20them%29%3A%0A%0A%0A---%0AMIRL%201.2%2B%"
               "20"
               "beta%20%28%3F%29%0ADebian%20GNU%2FLinux%2012%20%28bookworm%29%0ADesktop%3A%20KDE%20"
               "on%20Wayland%0APlayer%3A%20mpv%20%26%20co%0AVisualizer%3A%20off%20%28artwork%20only"
               "%29%0ABackground%3A%20Solid";
        QTest::newRow("idea") << true
                              << "mailto:help@example.org?subject=MIRL%20PRO%20idea&body=Your%20"
                                 "idea%3A%0A%0A%0A---%0AMIRL%201.2%2B%20beta%20%28%3F%29";
    }
    void mailIsEncodedWhole() {
        QFETCH(bool, idea);
        QFETCH(QString, url);
        QProcessEnvironment env;
        env.insert(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("KDE"));
        env.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-0"));
        const FeedbackContext context{
            QStringLiteral("1.2+ beta (?)"),
            distributionName("NAME=Debian\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"),
            desktopDescription(env),
            QStringLiteral("mpv & co"),
            QStringLiteral("off (artwork only)"),
            QStringLiteral("Solid")};
        QCOMPARE(feedbackURL(idea, context, QStringLiteral("help@example.org"))
                     .toString(QUrl::FullyEncoded),
                 url);
    }

    void systemWithoutPrettyNameIsNameAndVersion() {
        QCOMPARE(distributionName("# c\nNAME='Arch \\\"Linux\\\"'\nVERSION_ID=rolling\n"),
                 QStringLiteral("Arch \"Linux\" rolling"));
        QProcessEnvironment env;
        env.insert(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("ubuntu:GNOME"));
        env.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("x11"));
        QCOMPARE(desktopDescription(env), QStringLiteral("ubuntu, GNOME on X11"));
    }
};

QTEST_GUILESS_MAIN(tst_Feedback)
#include "tst_Feedback.moc"
