// The application's panel on a private X server: the Qt Quick view driven by the controller.
#include "X11TestMain.h"
#include "look/Theme.h"
#include "panel/host/NotchPanelHost.h"
#include "playback/PlayerState.h"

#include <QGuiApplication>
#include <QPainter>
#include <QProcess>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QQuickWindow>
#include <QRasterWindow>
#include <QScreen>
#include <QTest>
#include <atomic>

using namespace MirlPlayer;

namespace {
void pointerTo(int x, int y) {
    QProcess::execute(QStringLiteral("xdotool"),
                      {QStringLiteral("mousemove"), QString::number(x), QString::number(y)});
}

int largestDifference(const QImage& a, const QImage& b) {
    if (a.size() != b.size())
        return 255;
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            largest = std::max({largest, std::abs(qRed(p) - qRed(q)),
                                std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
        }
    }
    return largest;
}

// How many pixels differ by more than `levels` in a channel.
int pixelsApart(const QImage& a, const QImage& b, int levels) {
    int apart = 0;
    for (int y = 0; y < std::min(a.height(), b.height()); ++y)
        for (int x = 0; x < std::min(a.width(), b.width()); ++x)
            apart += largestDifference(a.copy(x, y, 1, 1), b.copy(x, y, 1, 1)) > levels;
    return apart;
}

// Another application's window under the panel, counting the presses that reach it.
struct WindowBeneath : QRasterWindow {
    int presses = 0;
    void mousePressEvent(QMouseEvent*) override { ++presses; }
    void paintEvent(QPaintEvent*) override {
        QPainter(this).fillRect(QRect(QPoint(), size()), Qt::darkCyan);
    }
};
} // namespace

class tst_NotchPanelHost : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aRightPressOnTheCardShowsTheContextMenu() {
        PlayerState player(nullptr);
        NotchPanelController::Outputs out;
        out.broadcast = [](const MirlState&) {};
        pointerTo(100, 900);
        NotchPanelHost host(player, {}, out);
        QList<QPoint> menus;
        host.setContextMenu([&](QPoint at) {
            menus << at;
            return true;
        });
        QVERIFY(host.show());
        pointerTo(756, 52);
        QTRY_VERIFY_WITH_TIMEOUT(host.expanded(), 2000);
        pointerTo(756, 100);
        QTest::qWait(150); // the card takes clicks once a tick has seen the pointer on it
        QProcess::execute(QStringLiteral("xdotool"),
                          {QStringLiteral("click"), QStringLiteral("3")});
        QTRY_COMPARE(menus, QList<QPoint>{QPoint(756, 100)});
    }

    void aPressOnEditableTextAsksForTheKeyboard_data() {
        QTest::addColumn<QPointF>("at");
        QTest::addColumn<bool>("editable");
        QTest::newRow("text input") << QPointF(50, 50) << true;
        QTest::newRow("read-only text input") << QPointF(150, 50) << false;
        QTest::newRow("plain text") << QPointF(250, 50) << false;
        QTest::newRow("a mouse area inside a text area") << QPointF(350, 50) << true;
        QTest::newRow("nothing") << QPointF(50, 150) << false;
    }
    void aPressOnEditableTextAsksForTheKeyboard() {
        QFETCH(QPointF, at);
        QFETCH(bool, editable);
        QQuickView view;
        QQmlComponent scene(view.engine());
        scene.setData("import QtQuick\n"
                      "Item { width: 400; height: 200\n"
                      "  TextInput { width: 100; height: 100; text: 'a' }\n"
                      "  TextInput { x: 100; width: 100; height: 100; readOnly: true }\n"
                      "  Text { x: 200; width: 100; height: 100; text: 't' }\n"
                      "  TextEdit { x: 300; width: 100; height: 100\n"
                      "    MouseArea { anchors.fill: parent } } }",
                      QUrl());
        std::unique_ptr<QQuickItem> root(qobject_cast<QQuickItem*>(scene.create()));
        QVERIFY2(root, qPrintable(scene.errorString()));
        root->setParentItem(view.contentItem());
        QCOMPARE(NotchPanelHost::editableTextAt(view.contentItem(), at), editable);
    }

    void theViewFollowsTheStagesAndTheirShape() {
        PlayerState player(nullptr);
        NotchPanelController::Inputs in;
        in.showVisualizer = [] { return false; };
        QList<MirlState> states;
        NotchPanelController::Outputs out;
        out.broadcast = [&](const MirlState& s) { states << s; };
        pointerTo(100, 900);
        NotchPanelHost host(player, in, out);
        QVERIFY(host.show());
        QVERIFY(QTest::qWaitForWindowExposed(host.window()));
        // The window covers the pill and its margin only.
        QCOMPARE(host.window()->geometry(), QRect(699, 14, 114, 72));
        QCOMPARE(host.shape(), QRectF(723, 38, 66, 24));
        QCOMPARE(host.panel()->inputRegion(), QRect());

        pointerTo(756, 52);
        QTRY_VERIFY_WITH_TIMEOUT(host.expanded(), 2000);
        QCOMPARE(host.panel()->level(), 3);
        // The drawn shape moves with the spring and settles on the artwork card.
        QTRY_COMPARE_WITH_TIMEOUT(host.shape(), QRectF(632, 38, 248, 336), 3000);
        QCOMPARE(states.last(), (MirlState{true, 632, 608, 248, 336}));

        pointerTo(100, 900);
        QTRY_VERIFY_WITH_TIMEOUT(!host.expanded(), 2000);
        QTRY_COMPARE_WITH_TIMEOUT(host.shape(), QRectF(723, 38, 66, 24), 3000);
        QCOMPARE(host.panel()->level(), 27);
    }

    void theRestingPillIsDrawnOverAStillScene_data() {
        QTest::addColumn<QString>("background");
        QTest::addColumn<bool>("meter");
        QTest::newRow("frosted glass and the meter") << QStringLiteral("frosted") << true;
        QTest::newRow("black and the play symbol") << QStringLiteral("solid") << false;
    }
    void theRestingPillIsDrawnOverAStillScene() {
        QFETCH(QString, background);
        QFETCH(bool, meter);
        Theme::shared().setBackgroundStyleID(background);
        Theme::shared().setShowVisualizer(meter);
        PlayerState player(nullptr);
        player.eqStore()->setLevels(QList<double>(128, 0.0));
        NotchPanelController::Outputs out;
        out.broadcast = [](const MirlState&) {};
        pointerTo(100, 900);
        NotchPanelHost host(player, {}, out);
        QVERIFY(host.show());
        QVERIFY(QTest::qWaitForWindowExposed(host.window()));
        QTRY_VERIFY(host.pillOverlaid());
        const QRect pill = host.shape().toAlignedRect();
        const auto onScreen = [&] {
            return QGuiApplication::primaryScreen()
                ->grabWindow(0, pill.x(), pill.y(), pill.width(), pill.height())
                .toImage();
        };

        // In silence the layer shows what the scene draws, up to the rasterisers' rounding on a
        // few edge pixels (a pill one pixel off differs along its whole outline); the
        // indicator's edges are smoothed in the layer alone, so its box counts by its ink.
        QTest::qWait(300);
        const QImage shown = onScreen();
        const QImage scene = host.window()
                                 ->grabWindow()
                                 .convertToFormat(QImage::Format_ARGB32_Premultiplied)
                                 .copy(pill.translated(-host.window()->geometry().topLeft()))
                                 .convertToFormat(shown.format());
        const QRect box((pill.width() - 20) / 2, (pill.height() - 11) / 2, 21, 12);
        const auto outsideBox = [&](QImage image) {
            QPainter(&image).fillRect(box, Qt::red);
            return image;
        };
        QCOMPARE_LE(pixelsApart(outsideBox(shown), outsideBox(scene), 48), 24);
        const auto ink = [&](const QImage& image) {
            int sum = 0;
            for (int y = box.top(); y <= box.bottom(); ++y)
                for (int x = box.left(); x <= box.right(); ++x)
                    sum += qGray(image.pixel(x, y));
            return sum;
        };
        QVERIFY2(std::abs(ink(shown) - ink(scene)) < ink(scene) / 4,
                 qPrintable(QStringLiteral("%1 against %2").arg(ink(shown)).arg(ink(scene))));

        // Music: the layer moves with it, the scene beneath draws no frame.
        std::atomic<int> frames = 0;
        connect(
            host.window(), &QQuickWindow::frameSwapped, this, [&] { ++frames; },
            Qt::DirectConnection);
        QImage first;
        for (int i = 0; i < 12; ++i) {
            player.eqStore()->setLevels(QList<double>(128, (i % 3) * 0.45));
            QTest::qWait(40);
            if (i == 1)
                first = onScreen();
        }
        QCOMPARE(frames.load(), 0);
        if (meter)
            QCOMPARE_GT(largestDifference(onScreen(), first), 60);

        // Opening hands the pill back to the scene.
        pointerTo(pill.center().x(), pill.center().y());
        QTRY_VERIFY_WITH_TIMEOUT(host.expanded(), 2000);
        QVERIFY(!host.pillOverlaid());
        QTRY_VERIFY_WITH_TIMEOUT(frames.load() > 0, 2000);
        pointerTo(100, 900);
        QTRY_VERIFY_WITH_TIMEOUT(host.pillOverlaid(), 4000);
    }

    void thePillKeepsItsPixelsThroughAnOpenAndCloseAndClicksBesideItFallThrough() {
        PlayerState player(nullptr);
        NotchPanelController::Inputs in;
        in.showVisualizer = [] { return false; };
        NotchPanelController::Outputs out;
        out.broadcast = [](const MirlState&) {};
        pointerTo(100, 900);
        WindowBeneath beneath;
        beneath.setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint);
        beneath.setGeometry(600, 0, 312, 200);
        beneath.show();
        QVERIFY(QTest::qWaitForWindowExposed(&beneath));
        NotchPanelHost host(player, in, out);
        QVERIFY(host.show());
        QVERIFY(QTest::qWaitForWindowExposed(host.window()));
        const QRect rest = host.window()->geometry();
        QScreen* screen = QGuiApplication::primaryScreen();
        QTest::qWait(300); // the first frames
        const QImage before = screen->grabWindow(0, 713, 28, 86, 44).toImage();

        pointerTo(756, 52);
        QTRY_VERIFY_WITH_TIMEOUT(host.expanded(), 2000);
        QTRY_VERIFY_WITH_TIMEOUT(host.window()->geometry().contains(QRect(632, 38, 248, 336)),
                                 2000);
        QTRY_COMPARE_WITH_TIMEOUT(host.shape(), QRectF(632, 38, 248, 336), 3000);
        pointerTo(100, 900);
        QTRY_VERIFY_WITH_TIMEOUT(!host.expanded(), 2000);
        QTRY_COMPARE_WITH_TIMEOUT(host.window()->geometry(), rest, 3000);
        QTest::qWait(300);
        // The same pixels, up to the rasteriser's rounding; a shift of one pixel shows at the
        // pill's edge as a difference of more than a hundred levels.
        QCOMPARE_LE(largestDifference(screen->grabWindow(0, 713, 28, 86, 44).toImage(), before), 8);

        // Inside the window's margin, just left of the pill: the press goes to the window beneath.
        pointerTo(718, 50);
        QProcess::execute(QStringLiteral("xdotool"),
                          {QStringLiteral("click"), QStringLiteral("1")});
        QTRY_COMPARE(beneath.presses, 1);
    }
};

int main(int argc, char** argv) {
    QQuickWindow::setDefaultAlphaBuffer(true);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);
    return MirlPlayer::Test::runOnPrivateX<tst_NotchPanelHost>(argc, argv);
}

#include "tst_NotchPanelHost.moc"
