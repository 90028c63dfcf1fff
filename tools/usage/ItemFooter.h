#pragma once

#include <string>

/// What stands below the options of a command that takes items: their names, and the exit statuses.
std::string itemFooter();
