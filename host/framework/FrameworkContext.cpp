#include "framework/FrameworkContext.h"

FrameworkContext::~FrameworkContext() = default;

ProtocolAdapterIfc* FrameworkContext::findProtocolAdapter(std::string&) {
    return nullptr;
}

Proxy* FrameworkContext::findProxy(std::string&, std::string&) {
    return nullptr;
}
