#pragma once

#include "framework/Service.h"

/// A service of the test that the framework neither starts nor calls.
class SiblingService : public Service {
public:
    void init(Context&) override {}
    void shutdown() override {}
    void timerEvent(int) override {}
    void run() override {}
};
