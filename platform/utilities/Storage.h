#pragma once

#include <string>

/// Where the telephone keeps files.
class Storage {
public:
    /// `path` below the storage that a restart empties.
    static std::string prependWithVolatileStorageLocation(const std::string& path);
};
