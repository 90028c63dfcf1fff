#pragma once

#include <string>

/// Which telephone this is. Fixed from start-up on; any thread may ask.
class HardwareVersion {
public:
    static std::string getModelAsString();
    static bool is_KD24();
    static bool is_KD26();
    static bool is_KD36_any();
    static bool is_KD46_any();
    static bool is_KL();
};
