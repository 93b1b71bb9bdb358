#pragma once

#include <QLoggingCategory>

// One logging category per subsystem. Messages show on standard error only when NOTCH_DEBUG is
// set (see installDebugLogFilter).
Q_DECLARE_LOGGING_CATEGORY(lcCore)

namespace MirlPlayer {
// Silences the program's debug categories unless NOTCH_DEBUG exists.
void installDebugLogFilter();
} // namespace MirlPlayer
