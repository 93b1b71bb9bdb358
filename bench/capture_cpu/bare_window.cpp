// The floor under any Qt Quick panel on this machine: a frameless, translucent window of the
// resting pill's size whose one rounded rectangle changes 30 times a second, the most often the
// level arrays may arrive. capture_cpu measures it in the same seconds as the program and cava,
// so what the toolkit and the X server cost per frame is seen apart from what the program adds.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

int main(int argc, char* argv[]) {
    QQuickWindow::setDefaultAlphaBuffer(true);
    QGuiApplication app(argc, argv);
    QQmlApplicationEngine engine;
    engine.loadData(R"(
        import QtQuick
        Window {
            width: 102; height: 72; x: 1200; y: 14; visible: true
            color: "transparent"; flags: Qt.FramelessWindowHint | Qt.WindowDoesNotAcceptFocus
            property int tick: 0
            Rectangle {
                anchors.centerIn: parent
                width: 12; height: 4 + tick % 8; radius: 3; color: "white"; opacity: 0.9
            }
            Timer { interval: 33; repeat: true; running: true; onTriggered: tick++ }
        })");
    return engine.rootObjects().isEmpty() ? 1 : app.exec();
}
