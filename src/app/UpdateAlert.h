#pragma once

#include "app/UpdateController.h"

#include <QPointer>

class QMessageBox;

namespace MirlPlayer {

// The update window: one small dialog at a time, never modal, brought to the front when it
// shows (it appears only when the user asked, or when a window of ours is in front already).
class UpdateAlert : public UpdateUserDriver {
public:
    UpdateAlert() = default;
    ~UpdateAlert() override;

    void showUpdateFound(const AppcastItem& update, std::function<void(bool)> reply) override;
    void showDownloading(const AppcastItem& update) override;
    void showUpToDate(const QString& versionText) override;
    void showError(const QString& message) override;

private:
    QMessageBox* present(const QString& text, const QString& detail, bool warning);

    QPointer<QMessageBox> m_box;
};

} // namespace MirlPlayer
