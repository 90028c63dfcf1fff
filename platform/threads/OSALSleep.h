#pragma once

/// Sleeping on the calling thread.
class OSALSleep {
public:
    /// Returns after that many seconds, at once for 0 or less.
    static void secSleep(int seconds);
};
