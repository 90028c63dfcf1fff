#include "utilities/HardwareVersion.h"

#include "utilities/DeviceIdentity.h"

namespace {

bool modelBeginsWith(const char* family) {
    return DeviceIdentity::model().rfind(family, 0) == 0;
}

} // namespace

std::string HardwareVersion::getModelAsString() {
    return DeviceIdentity::model();
}
bool HardwareVersion::is_KD24() {
    return DeviceIdentity::model() == "KD24";
}
bool HardwareVersion::is_KD26() {
    return DeviceIdentity::model() == "KD26";
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
