#pragma once

#include <string>

/// Where the log goes on a PC. Configured once at start-up; before that nothing is written. Any thread may log.
///
/// A line: "2026-11-20T12:00:00.123Z 4 Orvane Service [thread] getToken()". Control characters of a message are written
/// as \n, \t and \x1b.
class LogSink {
public:
    struct Options {
        int level = 3;            ///< most detailed level that is written, 2 to 6
        std::string file;         ///< standard error when empty
        bool showSecrets = false; ///< leave token values as they are
    };

    /// False, with the reason in `error`, when the file cannot be written.
    static bool configure(const Options& options, std::string& error);

    /// The message with its control characters made visible.
    static std::string visible(const std::string& message);
};
