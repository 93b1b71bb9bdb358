#include "app/UpdateAlert.h"

#include <QMessageBox>
#include <QPushButton>

namespace MirlPlayer {

UpdateAlert::~UpdateAlert() {
    delete m_box.data();
}

QMessageBox* UpdateAlert::present(const QString& text, const QString& detail, bool warning) {
    // The newest news replaces whatever the window said before. The old box may be the one
    // whose answer led here, so it goes on the next turn of the event loop, silently.
    if (m_box) {
        m_box->disconnect();
        m_box->hide();
        m_box->deleteLater();
    }
    auto* box = new QMessageBox(warning ? QMessageBox::Warning : QMessageBox::Information,
                                QStringLiteral("Software Update"), text, QMessageBox::NoButton);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::NonModal);
    box->setInformativeText(detail);
    m_box = box;
    return box;
}

void UpdateAlert::showUpdateFound(const AppcastItem& update, std::function<void(bool)> reply) {
    QMessageBox* box = present(
        QStringLiteral("MIRL PRO ") + update.displayVersion() + QStringLiteral(" is available"),
        QStringLiteral("Your software installer opens the update, and your settings carry over."),
        false);
    QPushButton* install =
        box->addButton(QStringLiteral("Install Update"), QMessageBox::AcceptRole);
    box->setEscapeButton(box->addButton(QStringLiteral("Later"), QMessageBox::RejectRole));
    box->setDefaultButton(install);
    // Answered once, whichever way the window goes.
    QObject::connect(box, &QMessageBox::finished, box, [box, install, reply = std::move(reply)] {
        reply(box->clickedButton() == install);
    });
    box->show();
    box->raise();
    box->activateWindow();
}

void UpdateAlert::showDownloading(const AppcastItem& update) {
    QMessageBox* box = present(
        QStringLiteral("Downloading MIRL PRO ") + update.displayVersion() + QStringLiteral("…"),
        QStringLiteral("Your software installer opens when it’s ready."), false);
    box->addButton(QStringLiteral("Hide"), QMessageBox::RejectRole);
    box->show();
}

void UpdateAlert::showUpToDate(const QString& versionText) {
    QMessageBox* box = present(QStringLiteral("You’re up to date"),
                               QStringLiteral("MIRL PRO ") + versionText +
                                   QStringLiteral(" is the newest version available."),
                               false);
    box->addButton(QMessageBox::Ok);
    box->show();
    box->raise();
    box->activateWindow();
}

void UpdateAlert::showError(const QString& message) {
    QMessageBox* box = present(QStringLiteral("Update failed"), message, true);
    box->addButton(QMessageBox::Ok);
    box->show();
    box->raise();
    box->activateWindow();
}

} // namespace MirlPlayer
