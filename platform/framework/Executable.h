#pragma once

#include <string>

class Context;

/// A service as the framework runs it. The framework calls the operations of one object from its own threads.
class Executable {
public:
    virtual ~Executable() = default;

    /// Called once, on a framework thread, before any other operation. `context` outlives the object.
    virtual void init(Context& context) = 0;

    /// Called once before the object is destroyed, on the thread that destroys it.
    virtual void shutdown() = 0;

    /// Expiry of a timer that the object created through Context::createTimer. Calls for different timers may
    /// overlap on several threads; calls for one timer do not. No framework lock is held.
    virtual void timerEvent(int id) = 0;

    /// A message from the framework's own queue, as opaque text.
    virtual void handleMsg(const std::string& message) = 0;
};
