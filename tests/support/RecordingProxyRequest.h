#pragma once

#include "framework/Method.h"
#include "framework/ProxyRequest.h"

#include <vector>

/// The way to another service: keeps what was sent.
class RecordingProxyRequest : public ProxyRequest {
public:
    void send(const Method& method) override { sent.push_back(method); }

    std::vector<Method> sent;
};
