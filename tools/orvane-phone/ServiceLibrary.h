#pragma once

#include <memory>
#include <string>

class Invoker;
class Proxy;
class Service;

/// The service's shared library, loaded as the telephone's framework loads it. What its functions make is to be
/// destroyed before the library goes.
class ServiceLibrary {
public:
    /// Null with the reason in `error` when the file is no such library.
    static std::unique_ptr<ServiceLibrary> load(const std::string& path, std::string& error);
    ~ServiceLibrary();
    ServiceLibrary(const ServiceLibrary&) = delete;
    ServiceLibrary& operator=(const ServiceLibrary&) = delete;

    Service* (*createService)() = nullptr;
    // Null when the library has none: then nobody can subscribe, or call, from outside.
    Proxy* (*createObserverProxy)() = nullptr;
    Invoker* (*createInvoker)() = nullptr;

private:
    explicit ServiceLibrary(void* handle) : m_handle(handle) {}

    void* m_handle;
};
