#include "orvane-phone/ServiceLibrary.h"

#include <dlfcn.h>

namespace {

template <class Function>
void find(void* handle, const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(::dlsym(handle, name));
}

} // namespace

std::unique_ptr<ServiceLibrary> ServiceLibrary::load(const std::string& path, std::string& error) {
    // A bare file name would be looked for where the system has its libraries.
    const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
    void* handle = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        error = ::dlerror();
        return nullptr;
    }
    std::unique_ptr<ServiceLibrary> library(new ServiceLibrary(handle));
    find(handle, "createOrvaneService", library->createService);
    find(handle, "createOrvaneServiceObserverProxy", library->createObserverProxy);
    find(handle, "createOrvaneServiceInvoker", library->createInvoker);
    if (library->createService == nullptr) {
        error = path + " has no function createOrvaneService";
        return nullptr;
    }
    return library;
}

ServiceLibrary::~ServiceLibrary() {
    ::dlclose(m_handle);
}
