#pragma once

class Executable;
class FrameworkContext;
class InvokerResponse;

/// Receives the remote messages for a service. Made through an exported factory; the caller of the factory owns it.
class Invoker {
public:
    virtual ~Invoker() = default;

    /// Handles one message of `length` bytes on the calling thread, to the end. Owns `response` from the call on.
    virtual void handleMessage(Executable* executable, const char* message, int length, InvokerResponse* response) = 0;

    /// Called once before the first message. `context` is not owned.
    virtual void initInvoker(FrameworkContext* context) = 0;
};
