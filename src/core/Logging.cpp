#include "core/Logging.h"

#include "core/Environment.h"

Q_LOGGING_CATEGORY(lcCore, "mirl.core")

namespace MirlPlayer {

void installDebugLogFilter() {
    QLoggingCategory::setFilterRules(debugEnabled() ? QStringLiteral("mirl.*=true")
                                                    : QStringLiteral("mirl.*=false"));
}

} // namespace MirlPlayer
