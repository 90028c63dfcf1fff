#pragma once

#include <string>
#include <utility>
#include <vector>

/// What the command line says.
struct Options {
    std::string server; ///< empty: as the store says
    std::string authorities;
    std::string certificate;
    std::string key;
    std::string model;
    std::string mac;
    std::string store;   ///< in memory when empty
    std::string service; ///< the service's library
    std::string control;
    std::vector<std::pair<std::string, std::string>> items; ///< key and value, in the order given
    std::vector<std::string> absentServices;
    bool noObserver = false;
    bool json = false;
    bool once = false;
    double timeScale = 1.0;
    int logLevel = 3;
    std::string logFile;
    bool logSecrets = false;
};

/// Reads the command line. When the program is to end at once, `exitStatus` is set and the result is false: 0 behind
/// --help, 2 behind one clear line on standard error.
bool readOptions(int argumentCount, char** arguments, Options& options, int& exitStatus);
