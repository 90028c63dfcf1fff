#include "JsonAllocations.h"
#include "telephone/TestTelephone.h"

#include <functional>
#include <ostream>

using namespace CloudAnswers;
using namespace OrvaneServiceTypes;

namespace {

constexpr auto ok = HttpClientIfc::STATUS_OK;

struct Reader {
    std::string operation; ///< as its message names it
    std::string text;
    std::function<void(OrvaneService&, std::string&)> read;
};

void PrintTo(const Reader& reader, std::ostream* out) {
    *out << reader.operation << " " << reader.text;
}

struct Builder {
    std::string failure; ///< the message when nothing could be built
    int requests;        ///< sent when there is memory enough, by REST
    int frames;          ///< the same on the channel
    std::function<void(OrvaneService&)> send;
};

void PrintTo(const Builder& builder, std::ostream* out) {
    *out << builder.failure;
}

class ScarceMemory : public TestTelephone {
protected:
    void SetUp() override {
        withCallLog();
        withPhonebook();
        withDnd();
        withObserver();
        connectWithEmptyCloud();
        openChannel();
        service->setSusbcriptionId("sub-1");
    }
};

/// Everything that comes from the network, read with each of the JSON library's allocations failing in turn.
class ReadingWithoutMemory : public ScarceMemory, public testing::WithParamInterface<Reader> {
protected:
    void read(std::size_t failingAllocation) {
        std::string text = GetParam().text;
        const JsonAllocations scarce(failingAllocation);
        GetParam().read(*service, text);
    }
};

TEST_P(ReadingWithoutMemory, IsReportedWithTheReadersOwnMessage) {
    read(0);
    const std::size_t allocations = JsonAllocations::count();
    ASSERT_GE(allocations, 3u);
    std::size_t unreported = 0;
    for (std::size_t failing = 1; failing <= allocations; ++failing) {
        platform.log.clear();

        read(failing);

        unreported += platform.log.hasBeginning(2, GetParam().operation + "() error on line ") ? 0 : 1;
        platform.locks.checkNothingHeld();
    }
    // The library itself does not notice when its buffer for the text at hand could not grow, which happens once here:
    // that text lacks a character then, and the rest is read as it stands.
    EXPECT_LE(unreported, 1u);
}

/// The same for everything that is sent with a body.
class BuildingWithoutMemory : public ScarceMemory, public testing::WithParamInterface<Builder> {
protected:
    void send(std::size_t failingAllocation) {
        platform.network.requests.clear();
        platform.webSocket.frames.clear();
        const JsonAllocations scarce(failingAllocation);
        // The answer is not what the memory is scarce for.
        platform.network.answersUnexpected = [this](const ScriptedNetwork::Request&, Exchange& exchange) {
            m_allocations = JsonAllocations::count();
            exchange.answers(500);
        };
        m_allocations = 0;
        GetParam().send(*service);
        m_allocations = m_allocations == 0 ? JsonAllocations::count() : m_allocations;
    }
    std::size_t m_allocations = 0; ///< until the message was built
};

TEST_P(BuildingWithoutMemory, SendsNothingAndSaysSo) {
    send(0);
    const std::size_t allocations = m_allocations;
    ASSERT_GE(allocations, 2u);
    EXPECT_EQ(GetParam().requests, static_cast<int>(platform.network.requests.size()));
    EXPECT_EQ(GetParam().frames, static_cast<int>(platform.webSocket.frames.size()));
    for (std::size_t failing = 1; failing <= allocations; ++failing) {
        platform.log.clear();

        send(failing);

        EXPECT_TRUE(platform.network.requests.empty()) << failing;
        EXPECT_TRUE(platform.webSocket.frames.empty()) << failing;
        EXPECT_EQ(1, platform.log.count(2, GetParam().failure)) << failing << " of " << allocations;
        EXPECT_FALSE(platform.log.contains("not found!")) << failing;
        platform.locks.checkNothingHeld();
    }
}

const Builder builders[] = {
    {"refreshOvEventsSubscription() -  create message failed!", 0, 1,
     [](OrvaneService& service) { service.refreshOvEventsSubscription(); }},
    {"cancelSubscribtionOvEvents() - create Client Request message failed!", 0, 1,
     [](OrvaneService& service) { service.cancelSubscriptionOvEvents(); }},
    {"addNewContact() create contact in JSON format failed!", 1, 0,
     [](OrvaneService& service) { service.addNewContact("<contact><firstname>C</firstname></contact>"); }},
    {"updateEditedContact() create contact in JSON format failed or empty id!", 1, 0,
     [](OrvaneService& service) {
         service.updateEditedContact("<contact><id>7</id><firstname>C</firstname></contact>");
     }},
};

INSTANTIATE_TEST_SUITE_P(Builders, BuildingWithoutMemory, testing::ValuesIn(builders));

const Reader readers[] = {
    {"handleTokenResponse", token(),
     [](OrvaneService& service, std::string& text) { service.handleTokenResponse(ok, text); }},
    {"handleExtensionResponse", extension(),
     [](OrvaneService& service, std::string& text) { service.handleExtensionResponse(ok, text); }},
    {"handleWebSocketAccessTokenResponse", webSocketToken(),
     [](OrvaneService& service, std::string& text) { service.handleWebSocketAccessTokenResponse(ok, text); }},
    {"handleCallLogResponse", callLog("c2", {call("1"), missedCall("2")}),
     [](OrvaneService& service, std::string& text) {
         std::vector<std::string> records;
         bool fullSync = false;
         service.handleCallLogResponse(ok, text, records, fullSync);
     }},
    {"handleBcaCallLogResponse", callLog("c2", {call("1"), missedCall("2")}),
     [](OrvaneService& service, std::string& text) {
         BcaLineType line;
         std::vector<std::string> records;
         service.handleBcaCallLogResponse(ok, text, line, records);
     }},
    {"handleTokenResponse", grants({{"900", "line 900"}}),
     [](OrvaneService& service, std::string& text) {
         int nextPage = 0;
         std::map<std::string, BcaLineType> lines;
         service.handleBcaLinesExtension(ok, text, nextPage, lines);
     }},
    {"handlePhonebookResponse", addressBook("p2", {Contact()}),
     [](OrvaneService& service, std::string& text) {
         int nextPage = 0;
         std::vector<std::string> records;
         bool publish = false;
         service.handlePhonebookResponse(ok, text, nextPage, records, publish);
     }},
    {"handlePhonebookRecordResponse", Contact().json(),
     [](OrvaneService& service, std::string& text) {
         std::vector<std::string> records;
         bool publish = false;
         service.handlePhonebookRecordResponse(ok, text, records, publish);
     }},
    {"handleServerDndStatusResponse", presence("TakeAllCalls"),
     [](OrvaneService& service, std::string& text) { service.handleServerDndStatusResponse(ok, text); }},
    {"handleServerDndStatusResponse", presence("TakeAllCalls", 5001),
     [](OrvaneService& service, std::string& text) { service.handleServerDndStatusBlfResponse(ok, text); }},
    {"onMessage", R"([{"type":"Heartbeat","messageId":"1"}])",
     [](OrvaneService& service, std::string& text) { service.onMessage(text); }},
};

INSTANTIATE_TEST_SUITE_P(Readers, ReadingWithoutMemory, testing::ValuesIn(readers));

} // namespace
