#include "utilities/HardwareVersion.h"

#include "utilities/DeviceIdentity.h"
#include "utilities/Storage.h"

#include <filesystem>

namespace {

std::string& storedModel() {
    static std::string model;
    return model;
}

bool modelBeginsWith(const char* family) {
    return storedModel().rfind(family, 0) == 0;
}

} // namespace

void DeviceIdentity::setModel(const std::string& model) {
    storedModel() = model;
}

const std::string& DeviceIdentity::model() {
    return storedModel();
}

std::string HardwareVersion::getModelAsString() {
    return storedModel();
}
bool HardwareVersion::is_KD24() {
    return storedModel() == "KD24";
}
bool HardwareVersion::is_KD26() {
    return storedModel() == "KD26";
}
bool HardwareVersion::is_KD36_any() {
    return modelBeginsWith("KD36");
}
bool HardwareVersion::is_KD46_any() {
    return modelBeginsWith("KD46");
}
bool HardwareVersion::is_KL() {
    return modelBeginsWith("KL");
}

std::string Storage::prependWithVolatileStorageLocation(const std::string& path) {
    std::error_code error;
    return (std::filesystem::temp_directory_path(error) / "orvane" / path).string();
}
