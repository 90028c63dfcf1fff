#pragma once

#include <string>

/// Which telephone the PC plays. Set once, before the service is loaded.
class DeviceIdentity {
public:
    static void setModel(const std::string& model);
    static const std::string& model();
};
