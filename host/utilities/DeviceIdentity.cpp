#include "utilities/DeviceIdentity.h"

namespace {

std::string& storedModel() {
    static std::string model;
    return model;
}

} // namespace

void DeviceIdentity::setModel(const std::string& model) {
    storedModel() = model;
}

const std::string& DeviceIdentity::model() {
    return storedModel();
}
