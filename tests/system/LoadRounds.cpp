// Loads the service into a telephone again and again in one process, and says after each round what the process holds.

#include "OrvaneServiceIfc.h"
#include "OrvaneServiceObserverIfc.h"
#include "data/LocalMgmt.h"
#include "data/PldsTags.h"
#include "framework/HostContext.h"
#include "network/NetworkControl.h"
#include "siblings/HostSiblings.h"
#include "utilities/DeviceIdentity.h"

#include <dlfcn.h>
#include <malloc.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <mutex>

namespace {

struct Arguments {
    const char* servicePath;
    const char* server;
    const char* authorities;
};

/// Waits for the end of a login: the phonebook is the last that it brings.
class LoginObserver : public OrvaneServiceObserverIfc {
public:
    bool waitForPhonebook() {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_phonebook; });
    }

    Executable* getSubscribingService() override { return nullptr; }
    void informUserEvent(const std::string&, OrvaneServiceTypes::UserMsgType) override {}
    void orvaneEvent(OrvaneServiceTypes::EventType) override {}
    void orvaneFullSync(std::vector<std::string>, OrvaneServiceTypes::DataType type) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_phonebook = m_phonebook || type == OrvaneServiceTypes::DATA_PHONEBOOK;
        m_changed.notify_all();
    }
    void orvaneIncrementalSync(std::vector<std::string>, OrvaneServiceTypes::DataType) override {}
    void orvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>&) override {}

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_phonebook = false;
};

std::unique_ptr<LocalMgmt> makeStore(const char* server) {
    std::string error;
    auto store = std::make_unique<LocalMgmt>(ItemStore::open("", error));
    store->setWriteListener([](const std::string&, const std::string&) {});
    store->preset(PldsTags::INTERFACE_STATUS, "up");
    store->preset(PldsTags::SERVER_TYPE, "7");
    store->preset(PldsTags::MAC_ADDRESS, "0011AABBCC01");
    store->preset(PldsTags::ORVANE_API_SERVER_ADDRESS, server);
    for (const std::string& item :
         {PldsTags::ORVANE_API_SYNC_CALL_LOG, PldsTags::ORVANE_API_SYNC_PHONEBOOK, PldsTags::ORVANE_API_SYNC_DND}) {
        store->preset(item, PldsTags::VALUE_TRUE);
    }
    return store;
}

bool logInOnce(const Arguments& arguments, void* library) {
    HostCertificateService certificates(arguments.authorities, "", "");
    NetworkControl::instance().setCertificates(&certificates);
    HostJournalService journal;
    journal.cleanedUp = [] {};
    HostSecurityLogService securityLog;
    securityLog.recordAdded = [](bool, const std::string&) {};
    HostTeamService team;
    team.lampChanged = [](const std::string&, bool) {};
    HostCommunicationsService communications;
    const std::unique_ptr<LocalMgmt> store = makeStore(arguments.server);
    HostContext context;
    context.addService("LocalMgmtIfc", store.get());
    context.addService("CertificateMgmtSvcIfc", &certificates);
    context.addService("JournalServiceIfc", &journal);
    context.addService("SecurityLogServiceIfc", &securityLog);
    context.addService("TeamServiceIfc", &team);
    context.addService("CommunicationsServiceIfc", &communications);

    LoginObserver observer;
    const auto create = reinterpret_cast<Service* (*)()>(::dlsym(library, "createOrvaneService"));
    const std::unique_ptr<Service> service(create());
    auto* calls = dynamic_cast<OrvaneServiceIfc*>(service.get());
    calls->subscribe(&observer);
    service->init(context);
    const bool loggedIn = observer.waitForPhonebook();
    store->stopNotifications();
    context.stopDelivery();
    calls->unsubscribe(&observer);
    service->shutdown();
    return loggedIn;
}

int entries(const char* folder) {
    return static_cast<int>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

bool runRound(const Arguments& arguments) {
    void* library = ::dlopen(arguments.servicePath, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "LoadRounds: %s\n", ::dlerror());
        return false;
    }
    const bool loggedIn = logInOnce(arguments, library);
    ::dlclose(library);
    const bool stillThere = ::dlopen(arguments.servicePath, RTLD_LAZY | RTLD_NOLOAD) != nullptr;
    const struct mallinfo2 heap = ::mallinfo2();
    std::printf(R"({"loggedIn":%s,"stillThere":%s,"heap":%zu,"threads":%d,"descriptors":%d})"
                "\n",
                loggedIn ? "true" : "false", stillThere ? "true" : "false", heap.uordblks + heap.hblkhd,
                entries("/proc/self/task"), entries("/proc/self/fd"));
    std::fflush(stdout);
    return loggedIn && !stillThere;
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 5) {
        std::fprintf(stderr, "usage: LoadRounds LIBRARY SERVER AUTHORITIES ROUNDS\n");
        return 2;
    }
    DeviceIdentity::setModel("KD24");
    for (int round = std::atoi(arguments[4]); round > 0; --round) {
        if (!runRound({arguments[1], arguments[2], arguments[3]})) {
            return 1;
        }
    }
    return 0;
}
