#pragma once

#include <nlohmann/json.hpp>

#include <string>

/// What one run of the program asks for.
struct Request {
    std::string control;
    double timeoutSeconds = 60;
    bool observe = false;           ///< instead of a message
    bool isCall = false;            ///< the answer is a reply of the service, which may not come, and then the end
    nlohmann::ordered_json message; ///< the line to send, without its number
};

/// Reads the command line. When the program is to end at once, `exitStatus` is set and the result is false: 0 behind
/// --help, 2 behind one clear line on standard error.
bool readCommandLine(int argumentCount, char** arguments, Request& request, int& exitStatus);
