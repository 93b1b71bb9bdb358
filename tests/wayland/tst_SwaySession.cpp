// The program in a headless Sway session (scripts/sway-session), its panel an X window of
// XWayland: the compositor's pointer opens and closes the card over a native Wayland window
// and over an empty workspace, with the first start's assistant up, and a click beside the pill
// reaches the native window beneath.
#include "support/PrivateBus.h"
#include "virtual-pointer.h"

#include <QDateTime>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <cstring>

namespace {
// A pointer device of the test's own in Sway's seat (wlroots' virtual-pointer protocol).
struct VirtualPointer {
    wl_display* display;
    zwlr_virtual_pointer_manager_v1* manager = nullptr;
    zwlr_virtual_pointer_v1* pointer = nullptr;

    explicit VirtualPointer(const QByteArray& socket)
        : display(wl_display_connect(socket.constData())) {
        static const wl_registry_listener listener{
            [](void* manager, wl_registry* registry, uint32_t name, const char* interface,
               uint32_t) {
                if (std::strcmp(interface, zwlr_virtual_pointer_manager_v1_interface.name) == 0)
                    *static_cast<void**>(manager) = wl_registry_bind(
                        registry, name, &zwlr_virtual_pointer_manager_v1_interface, 1);
            },
            [](void*, wl_registry*, uint32_t) {}};
        if (!display)
            return;
        wl_registry_add_listener(wl_display_get_registry(display), &listener, &manager);
        wl_display_roundtrip(display);
        if (manager)
            pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(manager, nullptr);
    }
    ~VirtualPointer() {
        if (display)
            wl_display_disconnect(display);
    }
    void send(auto&& request) {
        request(uint32_t(QDateTime::currentMSecsSinceEpoch()));
        zwlr_virtual_pointer_v1_frame(pointer);
        wl_display_roundtrip(display);
    }
    QPoint at{100, 500};
    // On the session's 1512 x 982, in steps as a hand moves a mouse: the compositor's enter
    // alone moves XWayland's pointer without a motion event, and the panel waits for motion.
    void moveTo(QPoint to) {
        for (int step = 1; step <= 8; ++step)
            send([&](uint32_t t) {
                const QPoint p = at + (to - at) * step / 8;
                zwlr_virtual_pointer_v1_motion_absolute(pointer, t, p.x(), p.y(), 1512, 982);
            });
        at = to;
    }
    void click() {
        for (uint32_t down : {1u, 0u})
            send([&](uint32_t t) { zwlr_virtual_pointer_v1_button(pointer, t, 0x110, down); });
    }
};
} // namespace

class tst_SwaySession : public QObject {
    Q_OBJECT
    QProcessEnvironment m_env = QProcessEnvironment::systemEnvironment();
    MirlTest::PrivateBus m_bus;
    QTemporaryDir m_dir;
    QProcess m_beneath, m_program;
    std::unique_ptr<VirtualPointer> m_pointer;
    QVariantMap m_state;

    QPoint pill(int dx) const { // top-left origin
        const auto v = [&](const char* key) { return m_state.value(QLatin1String(key)).toInt(); };
        return {v("x") + v("w") / 2 + dx, 982 - v("y") - v("h") / 2};
    }
    bool expanded() const { return m_state.value(QStringLiteral("expanded")).toString() == "1"; }
    QByteArray sway(const QStringList& args) {
        QProcess p;
        p.setProcessEnvironment(m_env);
        p.start(QStringLiteral("swaymsg"), args);
        p.waitForFinished();
        return p.readAllStandardOutput();
    }

public Q_SLOTS:
    void noteState(const QVariantMap& state) { m_state = state; }

private Q_SLOTS:
    void initTestCase() {
        if (QStandardPaths::findExecutable(QStringLiteral("foot")).isEmpty())
            QSKIP("foot is not installed: no native Wayland window to lie beneath the panel");
        QProcess up;
        up.start(QStringLiteral(MIRL_SWAY_SESSION), {QStringLiteral("up")});
        up.waitForFinished(30000);
        if (up.exitCode() == 77)
            QSKIP(up.readAllStandardError().constData());
        QCOMPARE(up.exitCode(), 0);
        for (const QString& pair : QString::fromUtf8(up.readAllStandardOutput()).split(' '))
            m_env.insert(pair.section('=', 0, 0), pair.section('=', 1).trimmed());
        qInfo("%s", up.readAllStandardError().constData());
        m_pointer = std::make_unique<VirtualPointer>(m_env.value("WAYLAND_DISPLAY").toLocal8Bit());
        QVERIFY2(m_pointer->pointer, "the compositor offers no virtual pointer");
        m_pointer->moveTo({100, 500});
        m_env.remove(QStringLiteral("QT_QPA_PLATFORM")); // the program picks its own
        m_env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_bus.address());
        // A native Wayland window filling the workspace, reporting the clicks it gets.
        m_beneath.setProcessEnvironment(m_env);
        m_beneath.start(
            QStringLiteral("foot"),
            {"sh", "-c",
             "stty raw -echo; printf '\\033[?1000h'; exec cat >" + m_dir.filePath("clicks")});
        QTRY_VERIFY_WITH_TIMEOUT(sway({"-t", "get_tree"}).contains("\"app_id\": \"foot\""), 10000);
        QVERIFY(m_bus.connect(QStringLiteral("watch"))
                    .connect({}, QStringLiteral("/com/kestrova/mirlpro"),
                             QStringLiteral("com.kestrova.mirlpro"), QStringLiteral("mirlState"),
                             this, SLOT(noteState(QVariantMap))));
        // A first start: its assistant, an X window of the program's own, comes up too.
        QFile::remove(m_env.value("XDG_CONFIG_HOME") + "/MIRL PRO/preferences.conf");
        m_program.setProcessEnvironment(m_env);
        m_program.setProcessChannelMode(QProcess::ForwardedChannels);
        m_program.start(QStringLiteral(MIRL_PROGRAM), {});
        qInfo("foot pid %lld, program pid %lld", m_beneath.processId(), m_program.processId());
        QTRY_VERIFY_WITH_TIMEOUT(!m_state.isEmpty(), 20000);
        QTRY_VERIFY_WITH_TIMEOUT(sway({"-t", "get_tree"}).contains("MIRL PRO Setup"), 10000);
    }

    void thePointerOnThePillOpensTheCardAndLeavingClosesIt_data() {
        QTest::addColumn<QString>("workspace");
        QTest::addColumn<QPoint>("leaveTo");
        QTest::newRow("over a native window") << "1" << QPoint(100, 500);
        QTest::newRow("onto the native window's title bar") << "1" << QPoint(300, 10);
        QTest::newRow("over an empty workspace") << "2" << QPoint(100, 500);
    }
    void thePointerOnThePillOpensTheCardAndLeavingClosesIt() {
        QFETCH(QString, workspace);
        QFETCH(QPoint, leaveTo);
        sway({"workspace", workspace});
        m_pointer->moveTo(pill(0));
        QTRY_VERIFY_WITH_TIMEOUT(expanded(), 3000);
        QTest::qWait(1000); // the window grows under the still pointer: no leave is heard
        QVERIFY(expanded());
        m_pointer->moveTo(leaveTo);
        QTRY_VERIFY_WITH_TIMEOUT(!expanded(), 3000);
    }

    void aClickBesideThePillReachesTheNativeWindowBeneath() {
        // Just beyond the trigger's 14 points around the pill. A click while the closing card
        // still moves may be lost; the first after it is not.
        m_pointer->moveTo(pill(-48));
        const auto heard = [&] { // the terminal's report of a press
            QFile clicks(m_dir.filePath("clicks"));
            return clicks.open(QIODevice::ReadOnly) && clicks.readAll().contains("\033[M");
        };
        QTRY_VERIFY((m_pointer->click(), heard()));
    }

    void cleanup() { sway({"workspace", "1"}); }

    void cleanupTestCase() {
        for (QProcess* p : {&m_program, &m_beneath}) {
            p->terminate();
            if (!p->waitForFinished(5000))
                p->kill();
        }
        m_pointer.reset();
        if (m_env.contains(QStringLiteral("SWAY_SESSION_DIR")))
            QProcess::execute(QStringLiteral(MIRL_SWAY_SESSION),
                              {"down", m_env.value("SWAY_SESSION_DIR")});
    }
};

QTEST_GUILESS_MAIN(tst_SwaySession)
#include "tst_SwaySession.moc"
