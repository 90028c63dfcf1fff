#include "orvane-phone/Telephone.h"

#include "OrvaneServiceIfc.h"
#include "data/ItemNames.h"
#include "data/LocalMgmt.h"
#include "data/PldsTags.h"
#include "framework/HostContext.h"
#include "framework/Invoker.h"
#include "framework/Proxy.h"
#include "network/NetworkControl.h"
#include "network/WebSocketThread.h"
#include "orvane-phone/Commands.h"
#include "orvane-phone/PhoneObserver.h"
#include "orvane-phone/ServiceLibrary.h"
#include "siblings/HostSiblings.h"
#include "siblings/SiblingThread.h"
#include "threads/SleepControl.h"
#include "threads/ThreadRegistry.h"
#include "threads/TimeScale.h"
#include "transport/ControlServer.h"
#include "transport/RemoteFramework.h"
#include "usage/ExitStatus.h"
#include "utilities/DeviceIdentity.h"

#include <algorithm>
#include <atomic>

/// In the order in which they are built; destroyed in the reverse order.
struct Telephone::Parts {
    explicit Parts(const Options& options, Output& output)
        : certificates(options.authorities, options.certificate, options.key), observer(output) {}

    std::unique_ptr<ServiceLibrary> library;
    HostContext context;
    SiblingThread siblings;
    std::unique_ptr<LocalMgmt> store;
    HostCommunicationsService communications;
    HostTeamService team;
    HostJournalService journal;
    HostSecurityLogService securityLog;
    HostCertificateService certificates;
    PhoneObserver observer;
    std::unique_ptr<Service> service;
    OrvaneServiceIfc* calls = nullptr; ///< the service as its callers see it
    std::unique_ptr<RemoteFramework> remote;
    std::unique_ptr<Commands> commands;
    ControlServer control;
    std::atomic<bool> firstLoginEnded{false};
};

Telephone::Telephone(Options options, Output& output) : m_options(std::move(options)), m_output(output) {}

Telephone::~Telephone() {
    ThreadRegistry::instance().setEndListener(nullptr);
}

bool Telephone::begin(std::string& error, int& exitStatus) {
    exitStatus = BAD_USAGE;
    TimeScale::set(m_options.timeScale);
    DeviceIdentity::setModel(m_options.model);
    m_parts = std::make_unique<Parts>(m_options, m_output);
    NetworkControl::instance().setCertificates(&m_parts->certificates);
    if (!makeStore(error)) {
        return false;
    }
    m_parts->library = ServiceLibrary::load(m_options.service, error);
    if (!m_parts->library) {
        return false;
    }
    addServices();
    if (!makeService(error) || !listen(error, exitStatus)) {
        return false;
    }
    // The service's own threads come after init, the login first of all.
    std::atomic<bool>& firstLoginEnded = m_parts->firstLoginEnded;
    const unsigned long firstLogin = ThreadRegistry::instance().lastId() + 1;
    ThreadRegistry::instance().setEndListener([&firstLoginEnded, firstLogin](unsigned long id) {
        if (id == firstLogin) {
            firstLoginEnded = true;
        }
    });
    if (!m_options.noObserver) {
        m_parts->calls->subscribe(&m_parts->observer);
    }
    m_output.ready(m_options.control);
    m_parts->service->init(m_parts->context);
    m_parts->commands->open();
    return true;
}

bool Telephone::makeService(std::string& error) {
    const ServiceLibrary& library = *m_parts->library;
    m_parts->service.reset(library.createService());
    m_parts->calls = dynamic_cast<OrvaneServiceIfc*>(m_parts->service.get());
    if (m_parts->calls == nullptr) {
        error = "the service of " + m_options.service + " is no OrvaneServiceIfc";
        return false;
    }
    m_parts->remote = std::make_unique<RemoteFramework>(
        m_parts->service.get(), library.createInvoker == nullptr ? nullptr : library.createInvoker(),
        library.createObserverProxy);
    m_parts->commands = std::make_unique<Commands>(
        Commands::Parts{m_parts->calls, m_parts->store.get(), &m_parts->communications, &m_parts->team,
                        &m_parts->siblings, m_parts->remote.get(), &m_output});
    return true;
}

bool Telephone::listen(std::string& error, int& exitStatus) {
    Commands& commands = *m_parts->commands;
    const ControlServer::Listening outcome = m_parts->control.listen(
        m_options.control,
        [&commands](LineConnection& connection, const std::string& line) { commands.handle(connection, line); },
        [&commands](LineConnection& connection) { commands.clientEnded(connection); }, error);
    exitStatus = outcome == ControlServer::Listening::OCCUPIED ? FAILED : BAD_USAGE;
    return outcome == ControlServer::Listening::BEGUN;
}

bool Telephone::makeStore(std::string& error) {
    std::unique_ptr<ItemStore> items = ItemStore::open(m_options.store, error);
    if (!items) {
        error = "the store " + m_options.store + " cannot be used: " + error;
        return false;
    }
    m_parts->store = std::make_unique<LocalMgmt>(std::move(items));
    m_parts->store->setWriteListener(
        [this](const std::string& key, const std::string& value) { m_output.item(ItemNames::nameOf(key), value); });
    if (!presetItems()) {
        error = "the store " + m_options.store + " cannot be written";
        return false;
    }
    NetworkControl::instance().setInterfaceUp(m_parts->store->get(PldsTags::INTERFACE_STATUS) == "up");
    for (const auto& [key, value] : m_parts->store->all()) {
        m_output.stored(ItemNames::nameOf(key), value);
    }
    return true;
}

bool Telephone::presetItems() {
    LocalMgmt& store = *m_parts->store;
    std::vector<std::pair<std::string, std::string>> items;
    for (const auto& [key, value] : {std::make_pair(PldsTags::INTERFACE_STATUS, std::string("up")),
                                     std::make_pair(PldsTags::SERVER_TYPE, std::string("7"))}) {
        if (store.get(key).empty()) {
            items.emplace_back(key, value);
        }
    }
    items.emplace_back(PldsTags::MAC_ADDRESS, m_options.mac);
    if (!m_options.server.empty()) {
        items.emplace_back(PldsTags::ORVANE_API_SERVER_ADDRESS, m_options.server);
    }
    items.insert(items.end(), m_options.items.begin(), m_options.items.end());
    return std::all_of(items.begin(), items.end(),
                       [&store](const auto& item) { return store.preset(item.first, item.second); });
}

void Telephone::addServices() {
    m_parts->team.lampChanged = [this](const std::string& uri, bool active) { m_output.lamp(uri, active); };
    m_parts->journal.cleanedUp = [this] { m_output.journal(); };
    m_parts->securityLog.recordAdded = [this](bool success, const std::string& text) {
        m_output.securityLog(success, text);
    };
    const auto add = [this](const char* name, Executable* service) {
        const auto& absent = m_options.absentServices;
        if (std::find(absent.begin(), absent.end(), name) == absent.end()) {
            m_parts->context.addService(name, service);
        }
    };
    add("LocalMgmtIfc", m_parts->store.get());
    add("CertificateMgmtSvcIfc", &m_parts->certificates);
    add("JournalServiceIfc", &m_parts->journal);
    add("CommunicationsServiceIfc", &m_parts->communications);
    add("TeamServiceIfc", &m_parts->team);
    add("SecurityLogServiceIfc", &m_parts->securityLog);
}

bool Telephone::hasFirstLoginEnded() const {
    return m_parts->firstLoginEnded;
}

bool Telephone::isRunning() const {
    return m_parts->calls->isRunning();
}

void Telephone::abort() {
    NetworkControl::instance().abort();
    SleepControl::endSleeps();
}

void Telephone::end() {
    m_parts->commands->close();
    m_parts->control.stop();
    m_parts->siblings.stop();
    m_parts->store->stopNotifications();
    m_parts->context.stopDelivery();
    if (!m_options.noObserver) {
        m_parts->calls->unsubscribe(&m_parts->observer);
    }
    m_parts->service->shutdown();
    m_parts->remote.reset();
    m_parts->service.reset();
    m_parts.reset();
}
