#pragma once

#include <QString>
#include <optional>

namespace MirlPlayer {

// The placement debug log: enabled by the marker file "Vantrel/.pilldebug" in the home folder
// (looked up once), it appends lines to "Vantrel/pill-debug.log" beside it and never trims it.
class PanelDebugLog {
public:
    explicit PanelDebugLog(QString homeDir = {});

    bool enabled();
    // Appends `line` and a line feed; silent on any failure.
    void append(const QString& line);
    QString logPath() const;

private:
    QString m_dir;
    std::optional<bool> m_enabled;
};

} // namespace MirlPlayer
