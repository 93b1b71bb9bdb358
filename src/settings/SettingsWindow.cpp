#include "settings/SettingsWindow.h"

#include "app/Updater.h"
#include "audio/AudioCaptureSettings.h"
#include "core/Logging.h"
#include "core/Preferences.h"
#include "library/SpotifyMemory.h"
#include "look/ReduceTransparency.h"
#include "look/Theme.h"
#include "settings/LoginItem.h"
#include "settings/SettingsModel.h"
#include "settings/SpotifyAccountPage.h"
#include "spotify/SpotifyLibrary.h"
#include "visualizers/VizConfig.h"

#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickWindow>
#include <QScreen>

void qml_register_types_MirlPlayer_Settings();

namespace MirlPlayer {

SettingsWindow::SettingsWindow(QString versionText, QObject* parent)
    : QObject(parent)
    , m_versionText(std::move(versionText))
    , m_model(std::make_unique<SettingsModel>(Theme::shared(), VizConfig::shared(),
                                              Preferences::shared()))
    , m_account(std::make_unique<SpotifyAccountPage>(
          SpotifyLibrary::shared(), SpotifyMemory::shared(), Preferences::shared())) {
    connect(m_model.get(), &SettingsModel::setupAssistantRequested, this,
            &SettingsWindow::setupAssistantRequested);
    connect(m_model.get(), &SettingsModel::feedbackRequested, this,
            &SettingsWindow::feedbackRequested);
}

SettingsWindow::~SettingsWindow() = default;

void SettingsWindow::build(const QString& page) {
    static const bool registered = [] {
        qml_register_types_MirlPlayer_Settings();
        return true;
    }();
    Q_UNUSED(registered);
    m_model->openPage(page);

    m_engine = std::make_unique<QQmlApplicationEngine>();
    m_engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    QQmlContext* context = m_engine->rootContext();
    context->setContextProperty(QStringLiteral("settings"), m_model.get());
    context->setContextProperty(QStringLiteral("viz"), &VizConfig::shared());
    context->setContextProperty(QStringLiteral("audioCapture"), &AudioCaptureSettings::shared());
    context->setContextProperty(QStringLiteral("spotify"), &SpotifyLibrary::shared());
    context->setContextProperty(QStringLiteral("spotifyMemory"), &SpotifyMemory::shared());
    context->setContextProperty(QStringLiteral("loginItem"), &LoginItem::shared());
    context->setContextProperty(QStringLiteral("transparency"), &ReduceTransparency::shared());
    context->setContextProperty(QStringLiteral("account"), m_account.get());
    context->setContextProperty(QStringLiteral("versionText"), m_versionText);
    context->setContextProperty(QStringLiteral("updater"), &Updater::shared());
    m_engine->load(QUrl(QStringLiteral("qrc:/qt/qml/MirlPlayer/Settings/SettingsWindow.qml")));
    if (m_engine->rootObjects().isEmpty()) {
        qCWarning(lcCore) << "the settings window could not be built";
        return;
    }
    m_window = qobject_cast<QQuickWindow*>(m_engine->rootObjects().first());
    // Centred once; afterwards it stays where the user puts it.
    if (m_window && m_window->screen())
        m_window->setPosition(m_window->screen()->availableGeometry().center() -
                              QPoint(m_window->width() / 2, m_window->height() / 2));
}

void SettingsWindow::open(const QString& page) {
    if (!m_window)
        build(page);
    else
        m_model->openPage(page); // a page title switches the open window; anything else does not
    if (!m_window)
        return;
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

} // namespace MirlPlayer
