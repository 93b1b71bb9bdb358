#pragma once

#include "X11TestSession.h"

#include <QGuiApplication>
#include <QTest>
#include <functional>

namespace MirlPlayer::Test {

// The main() of a test on a private X server: the server comes before the application object
// (an `App`: QApplication for widgets) and goes after it. `beforeApp` runs once the server is up,
// for what must precede the application; its false fails the test.
template <typename Test, typename App = QGuiApplication>
int runOnPrivateX(int argc, char** argv, X11TestSession::Bus bus = X11TestSession::Bus::own,
                  const std::function<bool()>& beforeApp = {}) {
    X11TestSession session(bus);
    if (!session.ok()) {
        qWarning("no private X server: %s", qPrintable(session.error()));
        return 1;
    }
    if (beforeApp && !beforeApp())
        return 1;
    App app(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace MirlPlayer::Test

// The test class, and the application class when it is not QGuiApplication.
#define MIRL_X11_TEST_MAIN(...)                                                                    \
    int main(int argc, char** argv) {                                                              \
        return MirlPlayer::Test::runOnPrivateX<__VA_ARGS__>(argc, argv);                           \
    }
