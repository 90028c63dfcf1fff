#include "utilities/Storage.h"

#include <filesystem>

std::string Storage::prependWithVolatileStorageLocation(const std::string& path) {
    std::error_code error;
    return (std::filesystem::temp_directory_path(error) / "orvane" / path).string();
}
