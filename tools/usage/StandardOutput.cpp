#include "usage/StandardOutput.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

bool StandardOutput::write(const std::string& program, const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) {
        return true;
    }
    const int reason = errno;
    std::cerr << program << ": cannot write to standard output: " << std::strerror(reason) << '\n';
    return false;
}
