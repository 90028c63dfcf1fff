#pragma once

#include <string>

namespace CLI {
class App;
}

/// Reads the command line into what `app` describes. When the program is to end at once, `exitStatus` is set and the
/// result is false: GOOD behind --help, FAILED when nobody takes it, BAD_USAGE behind one clear line on standard error.
bool parseArguments(CLI::App& app, int argumentCount, char** arguments, int& exitStatus);

/// One clear line for arguments that can be read, but not used. Always false, with `exitStatus` set.
bool refuseArguments(const CLI::App& app, const std::string& reason, int& exitStatus);
