#include "usage/StandardOutput.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

bool StandardOutput::write(const std::string& program, const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) {
        return true;
    }
    // Not by std::cerr, which tries standard output once more.
    const std::string line = program + ": cannot write to standard output: " + std::strerror(errno) + "\n";
    std::fputs(line.c_str(), stderr);
    return false;
}
