#pragma once

#include "life/CallPlayer.h"
#include "model/SeedData.h"

#include <mutex>

namespace cloudsim {

/// Lets an ordinary day happen, speeded up: calls, messages, colleagues who do not want to be disturbed, contacts that
/// change. Every account user takes part.
class LifeGenerator {
public:
    LifeGenerator(Cloud& cloud, CallPlayer& player, std::uint64_t seed);

    void setRunning(bool running);
    bool isRunning();
    /// So many calls of the first device's user, a few seconds from now, one after the other.
    void scheduleLateCalls(int count);

private:
    void scheduleNext();
    void live();
    void ringSomebody();
    void toggleDnd();
    void changeContact();
    std::optional<std::int64_t> somebody(bool withSharedLines);

    Cloud& m_cloud;
    CallPlayer& m_player;
    std::mutex m_mutex;
    SeedData m_data;
    bool m_running = false;
    bool m_scheduled = false;
};

} // namespace cloudsim
