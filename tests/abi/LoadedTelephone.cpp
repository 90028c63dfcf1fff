#include "LoadedTelephone.h"

#include "SemaphoreNames.h"
#include "data/PldsTags.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

std::string own(const std::string& resource) {
    return "/MODEL/MAC1/restapi/v1.0/account/~/extension/~" + resource;
}

} // namespace

LoadedTelephone::LoadedTelephone() {
    // Lines are for other tests; here they would cost memory that a telephone does not need.
    platform.log.level = 2;
    platform.store.set(PldsTags::INTERFACE_STATUS, "up");
    platform.store.set(PldsTags::SERVER_TYPE, "7");
    platform.store.set(PldsTags::MAC_ADDRESS, "MAC1");
    platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, "cloud.example");
    platform.store.set(PldsTags::ORVANE_API_SYNC_CALL_LOG, PldsTags::VALUE_TRUE);
    platform.store.set(PldsTags::ORVANE_API_SYNC_PHONEBOOK, PldsTags::VALUE_TRUE);

    m_library = ::dlopen(ORVANE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (m_library == nullptr) {
        ADD_FAILURE() << ::dlerror();
        return;
    }
    const auto create = reinterpret_cast<Service* (*)()>(::dlsym(m_library, "createOrvaneService"));
    platform.locks.nameNext(SemaphoreNames::ofService());
    m_service.reset(create());
    m_calls = dynamic_cast<OrvaneServiceIfc*>(m_service.get());
    m_webSocket = dynamic_cast<WebSocketAppIfc*>(m_service.get());
    m_calls->subscribe(&observer);
}

LoadedTelephone::~LoadedTelephone() {
    if (m_library != nullptr) {
        destroyService();
        ::dlclose(m_library);
    }
}

bool LoadedTelephone::isLoaded() {
    void* library = ::dlopen(ORVANE_LIBRARY, RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr) {
        return false;
    }
    ::dlclose(library);
    return true;
}

void LoadedTelephone::expectLogin(int calls, int contacts) {
    platform.network.expectGet("/MODEL/MAC1/auth/token").answers(200, CloudAnswers::token());
    platform.network.expectGet(own("")).answers(200, CloudAnswers::extension());
    platform.network.expectGet(own("/grant")).answers(200, CloudAnswers::grants({}));
    platform.network
        .expectGet(own("/call-log-sync") +
                   "?syncType=FSync&recordCount=100&view=Simple&showDeleted=false&statusGroup=All")
        .answers(200, CloudAnswers::callLog("c" + std::to_string(m_lastSyncToken), newCalls(calls)));
    std::vector<CloudAnswers::Contact> book;
    for (int id = 1; id <= contacts; ++id) {
        book.push_back(
            {id, "First" + std::to_string(id), "Last" + std::to_string(id), "+4917000" + std::to_string(id), "Alive"});
    }
    platform.network.expectGet(own("/address-book-sync") + "?syncType=FSync&perPage=50")
        .answers(200, CloudAnswers::addressBook("p1", book));
    platform.network.expect(HttpClientIfc::HTTP_POST, "/MODEL/MAC1/restapi/oauth/wstoken")
        .answers(200, CloudAnswers::webSocketToken());
}

void LoadedTelephone::poll(int calls) {
    const std::string used = std::to_string(m_lastSyncToken++);
    platform.network
        .expectGet(own("/call-log-sync") + "?syncType=ISync&recordCount=100&view=Simple&showDeleted=true&syncToken=c" +
                   used)
        .answers(200, CloudAnswers::callLog("c" + std::to_string(m_lastSyncToken), newCalls(calls)));
    platform.context.advance(60'000);
}

void LoadedTelephone::destroyService() {
    if (!m_service) {
        return;
    }
    m_calls->unsubscribe(&observer);
    m_service->shutdown();
    m_service.reset();
}

void LoadedTelephone::forgetRecords() {
    platform.network.verify();
    platform.network.requests = {};
    platform.log.clear();
    platform.threads.spawned = {};
    platform.context.calls = {};
    observer.events = {};
}

std::vector<CloudAnswers::Call> LoadedTelephone::newCalls(int count) {
    std::vector<CloudAnswers::Call> calls;
    for (int number = 0; number < count; ++number) {
        calls.push_back(CloudAnswers::call("call-" + std::to_string(++m_lastCall)));
    }
    return calls;
}
