#include "panel/logic/PanelDebugLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace MirlPlayer {

PanelDebugLog::PanelDebugLog(QString homeDir)
    : m_dir((homeDir.isEmpty() ? QDir::homePath() : homeDir) + QStringLiteral("/Vantrel")) {}

bool PanelDebugLog::enabled() {
    if (!m_enabled)
        m_enabled = QFileInfo::exists(m_dir + QStringLiteral("/.pilldebug"));
    return *m_enabled;
}

QString PanelDebugLog::logPath() const {
    return m_dir + QStringLiteral("/pill-debug.log");
}

void PanelDebugLog::append(const QString& line) {
    QFile file(logPath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return;
    file.write((line + QLatin1Char('\n')).toUtf8());
}

} // namespace MirlPlayer
