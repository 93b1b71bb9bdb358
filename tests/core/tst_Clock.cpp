#include "core/Clock.h"

#include <QTest>
#include <cmath>
#include <ctime>

using namespace MirlPlayer;

class tst_Clock : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // Pauses and token lifetimes are stored as wall seconds since 1970 and compared with the
    // server's seconds: a clock in other units would make them last far too long or not at all.
    void wallTimeIsSecondsSince1970() {
        const double reference = double(std::time(nullptr));
        QVERIFY(std::abs(Clock::system().wallNow() - reference) < 2.0);
    }
};

QTEST_GUILESS_MAIN(tst_Clock)
#include "tst_Clock.moc"
