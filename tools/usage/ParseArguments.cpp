#include "usage/ParseArguments.h"

#include "usage/ExitStatus.h"
#include "usage/StandardOutput.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <sstream>

bool parseArguments(CLI::App& app, int argumentCount, char** arguments, int& exitStatus) {
    try {
        app.parse(argumentCount, arguments);
        return true;
    } catch (const CLI::Success& success) {
        std::ostringstream help;
        app.exit(success, help, help);
        exitStatus = StandardOutput::write(app.get_name(), help.str()) ? GOOD : FAILED;
        return false;
    } catch (const CLI::RequiredError& missing) {
        // A command or an option that is misspelt is also one that is missing.
        const std::vector<std::string> unknown = app.remaining(true);
        return refuseArguments(
            app, unknown.empty() ? missing.what() : "The following argument was not expected: " + unknown.front(),
            exitStatus);
    } catch (const CLI::ParseError& error) {
        return refuseArguments(app, error.what(), exitStatus);
    }
}

bool refuseArguments(const CLI::App& app, const std::string& reason, int& exitStatus) {
    std::cerr << app.get_name() << ": " << reason << '\n';
    exitStatus = BAD_USAGE;
    return false;
}
