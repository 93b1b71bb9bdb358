#include "visualizers/views/VisualizerLog.h"

#include <atomic>

namespace MirlPlayer {

Q_LOGGING_CATEGORY(lcVisualizers, "mirl.visualizers")

void logNoGpuOnce(const char* reason) {
    static std::atomic_bool said{false};
    if (!said.exchange(true))
        qCWarning(lcVisualizers).nospace() << "the 3D visualizer styles draw nothing: " << reason;
}

} // namespace MirlPlayer
