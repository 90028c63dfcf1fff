#pragma once

/// The telephone's log. Any thread may call both functions; neither throws nor waits for anything slow.
///
/// Level 2 is for errors, 3 to 6 for ever finer detail. `tag` and `file` live for ever.

/// Whether a line of that tag and level would be written: ask before building costly arguments.
bool loggingOnAppLine(const char* tag, int level);

/// Writes one line; drops it when loggingOnAppLine is false.
void logAppLine(const char* tag, const char* file, int level, int line, const char* format, ...)
    __attribute__((format(printf, 5, 6)));
