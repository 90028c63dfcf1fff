#include "TestPlatform.h"

#include "utilities/HardwareVersion.h"
#include "utilities/Storage.h"

TestPlatform* TestPlatform::s_current = nullptr;

TestPlatform::TestPlatform() {
    s_current = this;
    context.addService("LocalMgmtIfc", &store);
    context.addService("CommunicationsServiceIfc", &communications);
    context.addService("TeamServiceIfc", &team);
    context.addService("JournalServiceIfc", &journal);
    context.addService("SecurityLogServiceIfc", &securityLog);
    context.addService("CertificateMgmtSvcIfc", &certificates);
}

TestPlatform::~TestPlatform() {
    s_current = nullptr;
}

TestPlatform& TestPlatform::current() {
    return *s_current;
}

namespace {

bool modelBeginsWith(const char* family) {
    TestPlatform::current().steps.add("ask for model ", family);
    return TestPlatform::current().model.rfind(family, 0) == 0;
}

bool modelIs(const char* name) {
    TestPlatform::current().steps.add("ask for model ", name);
    return TestPlatform::current().model == name;
}

} // namespace

std::string HardwareVersion::getModelAsString() {
    return TestPlatform::current().model;
}
bool HardwareVersion::is_KD24() {
    return modelIs("KD24");
}
bool HardwareVersion::is_KD26() {
    return modelIs("KD26");
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
    TestPlatform::current().steps.add("volatile storage of ", "\"" + path + "\"");
    return "/volatile/" + path;
}
