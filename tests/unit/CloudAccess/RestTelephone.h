#pragma once

#include "TestTelephone.h"

#include <string>

/// A telephone whose service is initialised but has not logged in: it sends what the test asks for and nothing else.
class RestTelephone : public TestTelephone {
protected:
    using Headers = HttpClientIfc::Headers;

    RestTelephone() {
        // Without a server there is no login; it is told the address afterwards.
        platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, "");
        initialise();
        platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, server);
        platform.log.clear();
    }

    bool request(HttpClientIfc::HTTPMETHOD method, const std::string& target, const std::string& body = std::string()) {
        return service->connectionHandler(target, body, method, response, requestHeaders, responseHeaders, status, "",
                                          0);
    }
    bool get(const std::string& target = "/path") { return request(HttpClientIfc::HTTP_GET, target); }

    Exchange& expectPath(const std::string& target = "/path") { return platform.network.expectGet(target); }
    void haveToken(const std::string& token = "T1") {
        std::string answer = CloudAnswers::token(token);
        ASSERT_TRUE(service->handleTokenResponse(HttpClientIfc::STATUS_OK, answer));
    }
    std::size_t requestCount() const { return platform.network.requests.size(); }
    void interfaceGoesDown() { platform.store.change(PldsTags::INTERFACE_STATUS, "down"); }

    std::string response = "former response";
    Headers requestHeaders;
    Headers responseHeaders;
    HttpClientIfc::eStatusCode status = static_cast<HttpClientIfc::eStatusCode>(999);
};
