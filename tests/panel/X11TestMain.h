#pragma once

#include "X11TestSession.h"

#include <QGuiApplication>
#include <QTest>

namespace MirlPlayer::Test {

// The main() of a test on a private X server: the server comes before the application object
// and goes after it.
template <typename Test>
int runOnPrivateX(int argc, char** argv, X11TestSession::Bus bus = X11TestSession::Bus::own) {
    X11TestSession session(bus);
    if (!session.ok()) {
        qWarning("no private X server: %s", qPrintable(session.error()));
        return 1;
    }
    QGuiApplication app(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace MirlPlayer::Test

#define MIRL_X11_TEST_MAIN(TestClass)                                                              \
    int main(int argc, char** argv) {                                                              \
        return MirlPlayer::Test::runOnPrivateX<TestClass>(argc, argv);                             \
    }
