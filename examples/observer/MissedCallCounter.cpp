// A sibling service that counts missed calls: what it takes to observe the call log in process.
#include "OrvaneServiceIfc.h"
#include "OrvaneServiceObserverIfc.h"
#include "framework/Context.h"
#include "framework/Service.h"
#include "logging/Logging.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

class MissedCallCounter : public Service, public OrvaneServiceObserverIfc {
public:
    void init(Context& context) override {
        m_orvane = dynamic_cast<OrvaneServiceIfc*>(context.getService("OrvaneServiceIfc"));
        if (m_orvane != nullptr) {
            m_orvane->subscribe(this);
        }
    }

    void shutdown() override {
        if (m_orvane != nullptr) {
            m_orvane->unsubscribe(this);
        }
    }

    void timerEvent(int) override {}
    void run() override {}

    Executable* getSubscribingService() override { return this; }
    void informUserEvent(const std::string&, OrvaneServiceTypes::UserMsgType) override {}
    void orvaneEvent(OrvaneServiceTypes::EventType) override {}
    void orvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>&) override {}

    void orvaneFullSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) override {
        if (type == OrvaneServiceTypes::DATA_CALL_LOG) {
            m_missed.clear();
            apply(data);
        }
    }

    void orvaneIncrementalSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) override {
        if (type == OrvaneServiceTypes::DATA_CALL_LOG) {
            apply(data);
        }
    }

private:
    // The calls come one at a time, so the set needs no lock of its own.
    void apply(const std::vector<std::string>& records) {
        for (const std::string& record : records) {
            if (record.empty() || record.front() != '{') {
                m_missed.erase(record);
                continue;
            }
            // {callType,id,...
            const std::size_t typeEnd = record.find(',');
            const std::size_t idEnd = record.find(',', typeEnd + 1);
            if (typeEnd == std::string::npos || idEnd == std::string::npos) {
                continue;
            }
            if (record.compare(1, typeEnd - 1, missedCallType) == 0) {
                m_missed.insert(record.substr(typeEnd + 1, idEnd - typeEnd - 1));
            }
        }
        logAppLine("Missed Calls", __FILE__, statusLevel, __LINE__, "%zu missed calls", m_missed.size());
    }

    static constexpr const char* missedCallType = "Missed";
    static constexpr int statusLevel = 4;

    OrvaneServiceIfc* m_orvane = nullptr; // not owned
    std::set<std::string> m_missed;
};

} // namespace

extern "C" __attribute__((visibility("default"))) Service* createMissedCallCounter() {
    return new MissedCallCounter;
}
