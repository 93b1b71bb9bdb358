#pragma once

#include "platform/linux/pipewire/PipeWireGraph.h"

namespace MirlPlayer {

// Process facts as the kernel's process table shows them (`/proc`, or another root for tests):
// the parent from `stat`; the sandbox from the Flatpak info file in the process's own root
// (readable for the user's own processes, also through a bus proxy of the same sandbox), or
// from the control group a Flatpak or Snap application runs in; the executable's file name.
// Every read is a local one of the kernel's; nothing here waits for another process.
class SystemProcessFacts final : public ProcessFacts {
public:
    explicit SystemProcessFacts(QString procRoot = QStringLiteral("/proc"));

    qint64 parentOf(qint64 pid) const override;
    QString sandboxAppID(qint64 pid) const override;
    QString binaryName(qint64 pid) const override;

private:
    QString path(qint64 pid, const char* entry) const;
    QString m_root;
};

} // namespace MirlPlayer
