#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <memory>

class QQmlApplicationEngine;

namespace MirlPlayer {

class SettingsModel;
class SpotifyAccountPage;

// The settings window: built at first use on the page asked for, then kept for the life of the
// process (closing only hides it). Asking again brings it forward; when the request names a page
// it shows that page, otherwise whatever page it showed.
class SettingsWindow : public QObject {
    Q_OBJECT
public:
    // `versionText` follows "MIRL PRO " on the updates page.
    explicit SettingsWindow(QString versionText, QObject* parent = nullptr);
    ~SettingsWindow() override;

    // `page` is a page title; an unknown or empty one opens the first page, or leaves an open
    // window on its page.
    void open(const QString& page = {});

    SettingsModel* model() const { return m_model.get(); }
    QQuickWindow* window() const { return m_window; }

Q_SIGNALS:
    void setupAssistantRequested();
    void feedbackRequested(bool idea);

private:
    void build(const QString& page);

    QString m_versionText;
    std::unique_ptr<SettingsModel> m_model;
    std::unique_ptr<SpotifyAccountPage> m_account;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QPointer<QQuickWindow> m_window;
};

} // namespace MirlPlayer
