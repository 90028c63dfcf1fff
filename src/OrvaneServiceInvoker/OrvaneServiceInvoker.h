#pragma once

#include "framework/Invoker.h"

/// Turns remote messages into calls of OrvaneServiceIfc and sends back the reply of those that have a result. Holds
/// no state but its context; any thread may call handleMessage.
class OrvaneServiceInvoker : public Invoker {
public:
    OrvaneServiceInvoker();
    ~OrvaneServiceInvoker() override;

    void handleMessage(Executable* executable, const char* message, int length, InvokerResponse* response) override;
    void initInvoker(FrameworkContext* context) override;

private:
    FrameworkContext* m_pFrameworkContext = nullptr; ///< not owned, null until initInvoker
};

/// An invoker with no context; the caller owns it.
extern "C" __attribute__((visibility("default"))) Invoker* createOrvaneServiceInvoker();
