#pragma once

#include "base/Guarded.h"
#include "base/Scheduler.h"
#include "channel/ChannelHub.h"
#include "faults/FaultEngine.h"
#include "model/State.h"
#include "rest/RequestJournal.h"
#include "rest/RestRouter.h"

namespace cloudsim {

/// What the provider consists of, apart from its servers. Each part has a lock of its own; the hub's comes before the
/// state's.
struct Cloud {
    explicit Cloud(State initial) : state(std::move(initial)), hub(state, router, scheduler) {}

    Guarded<State> state;
    RestRouter router;
    FaultEngine faults;
    RequestJournal journal;
    Scheduler scheduler;
    ChannelHub hub;
};

} // namespace cloudsim
