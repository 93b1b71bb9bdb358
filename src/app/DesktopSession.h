#pragma once

#include "app/AppDelegate.h"
#include "app/AudioEngineHost.h"
#include "app/StatusItem.h"
#include "platform/linux/desktop/DesktopContrast.h"
#include "platform/linux/mpris/MprisPlayerBridge.h"
#include "platform/linux/service/MirlBusService.h"
#include "platform/linux/x11/X11Workspace.h"

#include <QObject>
#include <memory>

class QMenu;

namespace MirlPlayer {

class NotchPanelHost;
class SettingsWindow;
class SetupWindow;
class SpotifyPlayRequest;

// The program in a Linux desktop session: the players over MPRIS, the delegate with the
// now-playing model, the program's name on the session bus, the focus log's activation watch over
// X11, the audio engine on PipeWire, and the panel, each wired to the others. Made once by the
// process entry, after the shipped defaults were seeded. GUI thread.
class DesktopSession : public QObject {
    Q_OBJECT
public:
    DesktopSession();
    ~DesktopSession() override;

    // The launch sequence; runs once the event loop has started.
    void launch();
    AppDelegate& delegate() { return m_delegate; }
    // The setup window while it exists.
    SetupWindow* setupWindow() const { return m_setup; }
    // Whether the status item can be seen (for the setup assistant's advice).
    bool statusItemVisible() const { return m_statusVisibility.visible(); }

private:
    void buildPanel(AppDelegate& app);
    void showSetupWindow();
    void openSettings(const QString& page);
    void sendFeedback(bool idea);
    void watchActivations();

    MprisPlayerBridge m_bridge;
    AppDelegate m_delegate;
    MirlBusService m_busService;
    X11Workspace m_workspace;
    AudioEngineHost m_audio;
    std::unique_ptr<SpotifyPlayRequest> m_playRequests;
    StatusItemVisibility m_statusVisibility;
    DesktopContrast m_contrast; // the desktop's word on reduced transparency
    std::unique_ptr<StatusItem> m_statusItem;
    std::unique_ptr<NotchPanelHost> m_panel;
    std::unique_ptr<SettingsWindow> m_settings; // built at first use, then kept
    SetupWindow* m_setup = nullptr;             // exists while the setup window does
    std::unique_ptr<QMenu> m_contextMenu;       // the last one popped up from the panel
};

} // namespace MirlPlayer
