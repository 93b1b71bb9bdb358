#pragma once

#include <functional>

namespace MirlPlayer {

// The seam to the system's sleep and wake. Audio capture is rebuilt after a wake, because the
// sound system may have been restarted underneath it. GUI thread.
class SleepWatch {
public:
    virtual ~SleepWatch() = default;
    // From now on `woke` runs on the GUI thread after every wake from sleep. Replaces an earlier
    // handler. Where the system cannot tell, it is simply never called.
    virtual void observe(std::function<void()> woke) = 0;
    virtual void stopObserving() = 0;
};

} // namespace MirlPlayer
