#pragma once

/// The end of the program: sleeps in progress end, and new ones return at once.
class SleepControl {
public:
    static void endSleeps();
};
