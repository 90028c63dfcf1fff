#pragma once

/// How a program ends.
enum ExitStatus : int { GOOD = 0, FAILED = 1, BAD_USAGE = 2 };

/// The last line of every help.
inline constexpr const char* exitStatusHelp = "Exit status: 0 good, 1 failed, 2 bad usage.";
