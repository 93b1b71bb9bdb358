#pragma once

#include "platform/NotchPanel.h"
#include "platform/Pointer.h"
#include "platform/ScreenInfo.h"
#include "platform/WindowFacts.h"

namespace MirlPlayer::Test {

// A 1512 x 982 display without a camera housing, the only screen.
inline ScreenDescription plainScreen(QRectF frame = QRectF(0, 0, 1512, 982)) {
    ScreenDescription s;
    s.name = QStringLiteral("plain");
    s.frame = frame;
    return s;
}

class FakeScreens : public ScreenInfo {
public:
    QList<ScreenDescription> list{plainScreen()};
    std::optional<ScreenDescription> main = plainScreen();
    QList<ScreenDescription> screens() override { return list; }
    std::optional<ScreenDescription> mainScreen() override { return main; }
    void announceChange() { notifyChanged(); }
};

class FakePointer : public Pointer {
public:
    QPointF at{10, 10};
    unsigned buttons = 0;
    int reads = 0;
    PointerReading read() override {
        ++reads;
        return {at, buttons};
    }
};

class FakeWindows : public WindowFacts {
public:
    std::optional<WindowList> list = WindowList{};
    int reads = 0;
    std::optional<WindowList> onScreenWindows() override {
        ++reads;
        return list;
    }
    qint64 ownPid() const override { return 4242; }
};

class FakePanel : public NotchPanel {
public:
    int level = 0;
    QRectF currentFrame;
    bool visible = false;
    bool ignoresMouse = false;
    QRectF hitRect{1, 1, 1, 1};
    double alpha = 1;
    double alphaSeconds = 0;
    int resignCount = 0;

    void setLevel(int l) override { level = l; }
    QRectF frame() const override { return currentFrame; }
    void setFrame(const QRectF& f) override { currentFrame = f; }
    void orderFrontRegardless() override { visible = true; }
    void orderOut() override { visible = false; }
    void setIgnoresMouseEvents(bool ignores) override { ignoresMouse = ignores; }
    void setHitRect(const QRectF& r) override { hitRect = r; }
    void animateAlpha(double a, double seconds) override {
        alpha = a;
        alphaSeconds = seconds;
    }
    void resignKey() override { ++resignCount; }
};

// A window record with every field present.
inline WindowRecord window(QString owner, int layer, QRectF r, qint64 pid = 100,
                           std::optional<double> alpha = 1.0) {
    WindowRecord w;
    w.owner = owner;
    w.layer = layer;
    w.pid = pid;
    w.alpha = alpha;
    w.bounds = WindowBounds{r.x(), r.y(), r.width(), r.height()};
    return w;
}

} // namespace MirlPlayer::Test
