#include "orvane-phone/ServiceLibrary.h"

#include <dlfcn.h>

namespace {

template <class Function>
bool find(void* handle, const char* name, Function*& function, std::string& error) {
    function = reinterpret_cast<Function*>(::dlsym(handle, name));
    if (function == nullptr) {
        error = std::string("the library has no function ") + name;
    }
    return function != nullptr;
}

} // namespace

std::unique_ptr<ServiceLibrary> ServiceLibrary::load(const std::string& path, std::string& error) {
    void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        error = ::dlerror();
        return nullptr;
    }
    std::unique_ptr<ServiceLibrary> library(new ServiceLibrary(handle));
    if (!find(handle, "createOrvaneService", library->createService, error) ||
        !find(handle, "createOrvaneServiceObserverProxy", library->createObserverProxy, error) ||
        !find(handle, "createOrvaneServiceInvoker", library->createInvoker, error)) {
        return nullptr;
    }
    return library;
}

ServiceLibrary::~ServiceLibrary() {
    ::dlclose(m_handle);
}
