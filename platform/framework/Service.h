#pragma once

#include "framework/Executable.h"
#include "framework/Threadable.h"

/// Base of every service that the framework loads. It adds no slot of its own to those of Executable, because the
/// slot order of a loaded service is part of its binary interface.
class Service : public Executable, public Threadable {
public:
    ~Service() override;

    /// Does nothing.
    void handleMsg(const std::string& message) override;
};
