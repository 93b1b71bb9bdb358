#pragma once

#include <QLoggingCategory>

namespace MirlPlayer {

Q_DECLARE_LOGGING_CATEGORY(lcVisualizers)

// Says once per process that the GPU styles draw nothing here, and why.
void logNoGpuOnce(const char* reason);

} // namespace MirlPlayer
