#pragma once

#include <exception>

/// Runs what must not take its thread along: whatever `action` throws ends here. `report(colon, text)` writes it into
/// the log, where both follow the words: ": " and the exception's text, or nothing twice for one without a text.
template <class Action, class Report>
void containExceptions(const Action& action, const Report& report) {
    try {
        action();
    } catch (const std::exception& exception) {
        report(": ", exception.what());
    } catch (...) {
        report("", "");
    }
}
