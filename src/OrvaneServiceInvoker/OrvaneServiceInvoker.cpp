#include "OrvaneServiceInvoker/OrvaneServiceInvoker.h"

#include "OrvaneServiceIfc.h"
#include "OrvaneServiceObserverIfc.h"
#include "framework/Executable.h"
#include "framework/FrameworkContext.h"
#include "framework/InvokerResponse.h"
#include "framework/Method.h"
#include "framework/ProtocolAdapterIfc.h"
#include "framework/Proxy.h"
#include "logging/Logging.h"
#include "utilities/Serializer.h"

#include <memory>
#include <sstream>

namespace {

constexpr const char* logTag = "Orvane Service Invoker";
constexpr const char* logSource = "./src/OrvaneServiceInvoker";
constexpr int logLevelError = 2;

#define INVOKER_LOG_ERROR(...)                                                                                         \
    do {                                                                                                               \
        if (loggingOnAppLine(logTag, logLevelError)) {                                                                 \
            logAppLine(logTag, logSource, logLevelError, __LINE__, __VA_ARGS__);                                       \
        }                                                                                                              \
    } while (false)

/// One remote call on its way: the service, the decoded request and the reply to fill.
struct Call {
    OrvaneServiceIfc& service;
    const Method& request;
    Method& reply;
    FrameworkContext& context;
    const InvokerResponse& response;

    bool readText(const char* name, std::string& value) const {
        return request.getStringParameter(name, value, Parameter::DIRECTION_IN);
    }
    bool readFlag(const char* name, bool& value) const {
        return request.getBoolParameter(name, value, Parameter::DIRECTION_IN);
    }
    void answer(bool result) { reply.addBoolParameter("result", result, Parameter::DIRECTION_OUT); }

    /// The proxy that stands for the sender in the list of observers, or null.
    OrvaneServiceObserverIfc* findObserver() const {
        std::string interfaceName = "OrvaneServiceObserverIfc";
        std::string subscriber = response.getSubscriberName();
        return dynamic_cast<OrvaneServiceObserverIfc*>(context.findProxy(interfaceName, subscriber));
    }
};

void subscribe(Call& call) {
    if (OrvaneServiceObserverIfc* observer = call.findObserver()) {
        call.service.subscribe(observer);
    }
}

void unsubscribe(Call& call) {
    if (OrvaneServiceObserverIfc* observer = call.findObserver()) {
        call.service.unsubscribe(observer);
    }
}

void isRunning(Call& call) {
    call.answer(call.service.isRunning());
}

void clearSyncTokens(Call& call) {
    call.service.clearSyncTokens();
}

void ageMissedCall(Call& call) {
    std::string id;
    if (call.readText("id", id)) {
        call.service.ageMissedCall(id);
    }
}

void ageMissedCalls(Call& call) {
    std::string serialForm;
    if (call.readText("ids", serialForm)) {
        std::set<std::string> ids;
        Serializer::deserialize(serialForm, ids);
        call.service.ageMissedCalls(ids);
    }
}

void isMissedCallViewed(Call& call) {
    std::string id;
    bool viewed = true;
    if (call.readText("id", id)) {
        viewed = call.service.isMissedCallViewed(id);
    }
    call.answer(viewed);
}

void deleteCallLogEntry(Call& call) {
    std::string id;
    if (call.readText("id", id)) {
        call.service.deleteCallLogEntry(id);
    }
}

void deleteAllCallLogEntries(Call& call) {
    call.answer(call.service.deleteAllCallLogEntries());
}

void refreshCallLogEntries(Call& call) {
    call.service.refreshCallLogEntries();
}

void refreshPhonebookEntries(Call& call) {
    call.service.refreshPhonebookEntries();
}

void refreshVoicemailEntries(Call& call) {
    call.service.refreshVoicemailEntries();
}

void reloadAllData(Call& call) {
    call.service.reloadAllData();
}

void addNewContact(Call& call) {
    std::string xmlData;
    if (call.readText("xmlData", xmlData)) {
        call.service.addNewContact(xmlData);
    }
}

void deleteSingleContact(Call& call) {
    std::string id;
    if (call.readText("id", id)) {
        call.service.deleteSingleContact(id);
    }
}

void updateEditedContact(Call& call) {
    std::string xmlData;
    if (call.readText("xmlData", xmlData)) {
        call.service.updateEditedContact(xmlData);
    }
}

void updateUserPresenceStatus(Call& call) {
    bool newDndState = false;
    if (call.readFlag("newDndState", newDndState)) {
        call.service.updateUserPresenceStatus(newDndState);
    }
}

void sipVoicemailStatusProcessed(Call& call) {
    std::string lineURI;
    std::string lineName;
    bool mwiIndicated = false;
    bool processed = false;
    if (call.readText("lineURI", lineURI) && call.readText("lineName", lineName) &&
        call.readFlag("mwiIndicated", mwiIndicated)) {
        processed = call.service.sipVoicemailStatusProcessed(lineURI, lineName, mwiIndicated);
    }
    call.answer(processed);
}

struct RemoteMethod {
    const char* name;
    void (*run)(Call& call);
};

constexpr RemoteMethod remoteMethods[] = {
    {"subscribe", subscribe},
    {"unsubscribe", unsubscribe},
    {"isRunning", isRunning},
    {"clearSyncTokens", clearSyncTokens},
    {"ageMissedCall", ageMissedCall},
    {"ageMissedCalls", ageMissedCalls},
    {"isMissedCallViewed", isMissedCallViewed},
    {"deleteCallLogEntry", deleteCallLogEntry},
    {"deleteAllCallLogEntries", deleteAllCallLogEntries},
    {"refreshCallLogEntries", refreshCallLogEntries},
    {"refreshPhonebookEntries", refreshPhonebookEntries},
    {"refreshVoicemailEntries", refreshVoicemailEntries},
    {"reloadAllData", reloadAllData},
    {"addNewContact", addNewContact},
    {"deleteSingleContact", deleteSingleContact},
    {"updateEditedContact", updateEditedContact},
    {"updateUserPresenceStatus", updateUserPresenceStatus},
    {"sipVoicemailStatusProcessed", sipVoicemailStatusProcessed},
};

void runRemoteMethod(Call& call) {
    for (const RemoteMethod& method : remoteMethods) {
        if (call.request.getName() == method.name) {
            method.run(call);
            return;
        }
    }
    INVOKER_LOG_ERROR("handleMessage() unknown request='%s'", call.request.getName().c_str());
}

} // namespace

Invoker* createOrvaneServiceInvoker() {
    return std::make_unique<OrvaneServiceInvoker>().release();
}

OrvaneServiceInvoker::OrvaneServiceInvoker() = default;

OrvaneServiceInvoker::~OrvaneServiceInvoker() = default;

void OrvaneServiceInvoker::initInvoker(FrameworkContext* context) {
    m_pFrameworkContext = context;
}

void OrvaneServiceInvoker::handleMessage(Executable* executable, const char* message, int length,
                                         InvokerResponse* response) {
    // Destroyed on every path: that tells the framework that no further reply comes.
    const std::unique_ptr<InvokerResponse> ownedResponse(response);
    auto* service = dynamic_cast<OrvaneServiceIfc*>(executable);
    std::string protocol = response->getProtocolName();
    ProtocolAdapterIfc* adapter =
        m_pFrameworkContext != nullptr ? m_pFrameworkContext->findProtocolAdapter(protocol) : nullptr;
    std::istringstream stream(std::string(message, static_cast<std::size_t>(length)));
    Method request;
    if (service == nullptr || adapter == nullptr || !adapter->decode(stream, request)) {
        INVOKER_LOG_ERROR("handleMessage() ovSvc[%p] protocolAdapter[%p]", static_cast<void*>(service),
                          static_cast<void*>(adapter));
        return;
    }
    Method reply(request.getName(), Method::RESPONSE);
    Call call{*service, request, reply, *m_pFrameworkContext, *response};
    runRemoteMethod(call);
    if (!reply.getParameters().empty()) {
        std::ostringstream encoded;
        adapter->encode(encoded, reply);
        const std::string text = encoded.str();
        response->send(text.data(), static_cast<int>(text.size()));
    }
}
