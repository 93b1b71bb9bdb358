#include "setup/SetupWindow.h"

#include "core/Logging.h"
#include "settings/LoginItem.h"
#include "setup/SetupModel.h"

#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QScreen>

void qml_register_types_MirlPlayer_Setup();

namespace MirlPlayer {

SetupWindow::SetupWindow(std::unique_ptr<SetupModel> model, bool closable, QObject* parent)
    : QObject(parent)
    , m_model(std::move(model))
    , m_engine(std::make_unique<QQmlApplicationEngine>()) {
    static const bool registered = [] {
        qml_register_types_MirlPlayer_Setup();
        return true;
    }();
    Q_UNUSED(registered);
    m_engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    QQmlContext* context = m_engine->rootContext();
    context->setContextProperty(QStringLiteral("setup"), m_model.get());
    context->setContextProperty(QStringLiteral("loginItem"), &LoginItem::shared());
    context->setContextProperty(QStringLiteral("closable"), closable);
    m_engine->load(QUrl(QStringLiteral("qrc:/qt/qml/MirlPlayer/Setup/SetupWindow.qml")));
    if (m_engine->rootObjects().isEmpty()) {
        qCWarning(lcCore) << "the setup window could not be built";
        return;
    }
    m_window = qobject_cast<QQuickWindow*>(m_engine->rootObjects().constFirst());
    if (!m_window)
        return;
    connect(m_window, &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible && m_shown) {
            m_shown = false;
            m_model->shutDown();
            Q_EMIT closed();
        }
    });
}

SetupWindow::~SetupWindow() {
    m_model->shutDown();
}

void SetupWindow::show() {
    if (!m_window)
        return;
    if (!m_shown && m_window->screen())
        m_window->setPosition(m_window->screen()->availableGeometry().center() -
                              QPoint(m_window->width() / 2, m_window->height() / 2));
    m_shown = true;
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

void SetupWindow::close() {
    // Hidden rather than closed: a first run's window refuses to close.
    if (m_window)
        m_window->hide();
}

} // namespace MirlPlayer
