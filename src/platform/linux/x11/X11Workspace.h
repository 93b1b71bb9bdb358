#pragma once

#include "platform/Workspace.h"

#include <QAbstractNativeEventFilter>
#include <QObject>

class QSocketNotifier;

namespace MirlPlayer {

// The frontmost application from _NET_ACTIVE_WINDOW: its WM_CLASS class as the id (Spotify's
// desktop client reported as "com.spotify.client", as the focus log expects) and its
// _NET_WM_PID. Activation events come from watching that root property over the process's one
// X connection: through Qt's event filter when the connection is Qt's, else by reading the
// connection's events on the GUI thread.
class X11Workspace : public QObject, public Workspace, private QAbstractNativeEventFilter {
    Q_OBJECT
public:
    explicit X11Workspace(QObject* parent = nullptr);
    ~X11Workspace() override;

    Application frontmost() override;
    void activate(const Application& app) override;

    // The identifier for a window class: the well-known players keep their usual identifiers.
    static QString applicationID(const QByteArray& wmClass);

private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    void readEvents();
    // True for a change of the active window.
    bool isActivation(const void* event) const;
    void activeWindowChanged();
    Application applicationOf(quint32 window);

    QSocketNotifier* m_notifier = nullptr;
    quint32 m_activeAtom = 0;
    Application m_lastFront;
};

} // namespace MirlPlayer
