#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <memory>

class QQmlApplicationEngine;

namespace MirlPlayer {

class SetupModel;

// The setup window: the assistant's rail and pages over a SetupModel. A first run cannot be
// closed away (no close button, and closing is refused); a replay can. GUI thread.
class SetupWindow : public QObject {
    Q_OBJECT
public:
    SetupWindow(std::unique_ptr<SetupModel> model, bool closable, QObject* parent = nullptr);
    ~SetupWindow() override;

    // Brings the window forward, showing it first if needed.
    void show();
    // Closes it from the program's side (the finish), closable or not.
    void close();

    SetupModel* model() const { return m_model.get(); }
    QQuickWindow* window() const { return m_window; }

Q_SIGNALS:
    // The window went away: the user closed a replay, or the finish closed it.
    void closed();

private:
    std::unique_ptr<SetupModel> m_model;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QPointer<QQuickWindow> m_window;
    bool m_shown = false;
};

} // namespace MirlPlayer
