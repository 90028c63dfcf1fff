#pragma once

/// The side of a service that the framework may run on a thread of its own. The two queries have defaults in the
/// platform: a service that never asks for such a thread does not override them.
class Threadable {
public:
    virtual ~Threadable();

    /// Body of the service's own thread; returns when the thread is to end.
    virtual void run() = 0;

    /// Priority that the framework gives to that thread, a value of OSALThreadPriority.
    virtual int getThreadPriorityForPlatform() const;

    /// Kind of thread that the framework makes; 0 is "none".
    virtual int type() const;
};
