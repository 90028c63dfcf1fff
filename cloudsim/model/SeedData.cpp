#include "model/SeedData.h"

#include <array>
#include <cstdio>

namespace cloudsim {
namespace {

constexpr std::array givenNames{"Anna",   "Bruno", "Carla",  "Daniel", "Elena",  "Felix",  "Greta", "Hannes",
                                "Ingrid", "Jonas", "Katja",  "Lukas",  "Maria",  "Niklas", "Olga",  "Paul",
                                "Renate", "Simon", "Teresa", "Ursula", "Viktor", "Wanda",  "Yusuf", "Zoë"};
constexpr std::array familyNames{"Albers",   "Brandt",   "Conrad", "Dietrich",  "Ebert",   "Fischer", "Graf",
                                 "Hartmann", "Iversen",  "Jansen", "Keller",    "Lorenz",  "Maier",   "Neumann",
                                 "Olsen",    "Petersen", "Quandt", "Richter",   "Schäfer", "Thoma",   "Ulrich",
                                 "Vogel",    "Winter",   "Yıldız", "Zimmermann"};
constexpr std::array companies{"Northwind Printing", "Blue Harbour Travel", "Old Mill Bakery", "Granite Insurance",
                               "Meridian Optics"};

struct NumberRange {
    const char* prefix;
    int digits;
};

/// Ranges that their countries keep free for films and books.
constexpr std::array numberRanges{NumberRange{"+493023125", 3}, NumberRange{"+494066969", 3},
                                  NumberRange{"+498999998", 3}, NumberRange{"+441632960", 3},
                                  NumberRange{"+442079460", 3}, NumberRange{"+1212555010", 1}};

struct Kind {
    const char* direction;
    const char* result;
    bool connected;
};

/// Every kind that a call list shows, the frequent ones more than once.
constexpr std::array kinds{
    Kind{"Inbound", "Accepted", true},        Kind{"Outbound", "Call connected", true},
    Kind{"Inbound", "Missed", false},         Kind{"Inbound", "Call connected", true},
    Kind{"Outbound", "No Answer", false},     Kind{"Inbound", "Voicemail", false},
    Kind{"Inbound", "Busy", false},           Kind{"Outbound", "Call connected", true},
    Kind{"Inbound", "Rejected", false},       Kind{"Inbound", "No Answer", false},
    Kind{"Outbound", "Busy", false},          Kind{"Inbound", "Hang Up", false},
    Kind{"Inbound", "Blocked", false},        Kind{"Inbound", "IP Phone Offline", false},
    Kind{"Outbound", "Call connected", true}, Kind{"Inbound", "Accepted", true},
};

Json ownParty(const Extension& extension) {
    Json party{{"name", extension.name}};
    if (!extension.phoneNumber.empty())
        party["phoneNumber"] = extension.phoneNumber;
    party["extensionNumber"] = extension.number;
    return party;
}

Extension makeExtension(std::int64_t id, const std::string& number, const std::string& name,
                        const std::string& phoneNumber, const std::string& type = "User") {
    Extension extension;
    extension.id = id;
    extension.calls = CallLog(id);
    extension.number = number;
    extension.name = name;
    extension.phoneNumber = phoneNumber;
    extension.type = type;
    return extension;
}

} // namespace

SeedData::SeedData(std::uint64_t seed) : m_random(seed) {
    constexpr int acquaintances = 12;
    for (int i = 0; i < acquaintances; ++i)
        m_acquaintances.push_back({{"name", personName()}, {"phoneNumber", phoneNumber()}});
}

int SeedData::between(int low, int high) {
    return low + static_cast<int>(m_random() % static_cast<std::uint64_t>(high - low + 1));
}

std::string SeedData::personName() {
    const char* given = givenNames[m_random() % givenNames.size()];
    return std::string(given) + " " + familyNames[m_random() % familyNames.size()];
}

std::string SeedData::phoneNumber() {
    const NumberRange& range = numberRanges[m_random() % numberRanges.size()];
    char digits[16];
    std::snprintf(digits, sizeof digits, "%0*d", range.digits, between(0, range.digits == 1 ? 9 : 999));
    return std::string(range.prefix) + digits;
}

Json SeedData::outsideParty() {
    constexpr int withheldInHundred = 6;
    constexpr int strangerInHundred = 30;
    int draw = between(0, 99);
    if (draw < withheldInHundred)
        return Json::object();
    if (draw < strangerInHundred)
        return {{"phoneNumber", phoneNumber()}};
    return m_acquaintances[m_random() % m_acquaintances.size()];
}

Json SeedData::makeCall(const Extension& owner, WallTime start, int kind) {
    const Kind& chosen = kinds[static_cast<std::size_t>(kind) % kinds.size()];
    bool outbound = std::string(chosen.direction) == "Outbound";
    Json other = outsideParty();
    if (outbound && other.empty())
        other = m_acquaintances.front();
    constexpr int longCallInHundred = 8;
    int duration = between(5, 900);
    if (between(0, 99) < longCallInHundred)
        duration = between(3600, 7200);
    Json call{{"startTime", toTimestamp(start)}, {"duration", chosen.connected ? duration : between(0, 30)}};
    call["type"] = "Voice";
    call["direction"] = chosen.direction;
    call["action"] = between(0, 3) == 0 ? "VoIP Call" : "Phone Call";
    call["result"] = chosen.result;
    call["to"] = outbound ? other : ownParty(owner);
    if (outbound)
        call["from"] = ownParty(owner);
    else if (!other.empty())
        call["from"] = other;
    return call;
}

Json SeedData::makeContact() {
    Json contact{{"firstName", givenNames[m_random() % givenNames.size()]},
                 {"lastName", familyNames[m_random() % familyNames.size()]}};
    contact["businessPhone"] = phoneNumber();
    if (between(0, 1) == 0)
        contact["mobilePhone"] = phoneNumber();
    if (between(0, 3) == 0)
        contact["homePhone"] = phoneNumber();
    if (between(0, 4) == 0)
        contact["businessPhone2"] = phoneNumber();
    if (between(0, 2) == 0)
        contact["company"] = companies[m_random() % companies.size()];
    return contact;
}

void SeedData::addCalls(Extension& extension, int count, WallTime before) {
    std::vector<Json> calls;
    for (int i = 0; i < count; ++i) {
        before -= std::chrono::minutes(between(7, 600)) + std::chrono::milliseconds(between(0, 59999));
        calls.push_back(makeCall(extension, before, i));
    }
    for (auto call = calls.rbegin(); call != calls.rend(); ++call)
        extension.calls.add(*call);
}

State SeedData::makeState(int calls, int contacts) {
    constexpr std::int64_t firstId = 400131001;
    constexpr int people = 6;
    State state;
    for (int i = 0; i < people; ++i) {
        auto id = firstId + i;
        state.extensions.emplace(id, makeExtension(id, std::to_string(101 + i), personName(), phoneNumber()));
    }
    auto saleId = firstId + people;
    auto supportId = saleId + 1;
    state.extensions.emplace(saleId, makeExtension(saleId, "301", "Sales", phoneNumber(), "SharedLinesGroup"));
    state.extensions.emplace(supportId, makeExtension(supportId, "302", "Support", phoneNumber(), "SharedLinesGroup"));

    auto now = std::chrono::system_clock::now();
    Extension& user = state.extensions.at(firstId);
    user.grants = {saleId, supportId};
    addCalls(user, calls, now);
    for (int i = 0; i < contacts; ++i)
        user.contacts.add(makeContact());
    constexpr int otherCalls = 10;
    constexpr int otherContacts = 5;
    for (auto& [id, extension] : state.extensions)
        if (id != firstId)
            addCalls(extension, otherCalls, now);
    for (int i = 0; i < otherContacts; ++i)
        state.extensions.at(firstId + 1).contacts.add(makeContact());

    state.devices = {{"KD24", "0011AABBCC01", firstId, ""},
                     {"KD26", "0011AABBCC02", firstId + 1, ""},
                     {"KD36", "0011AABBCC03", firstId + 2, ""},
                     {"KD46", "0011AABBCC04", firstId + 3, ""},
                     {"KL20", "0011AABBCC05", firstId + 4, ""}};
    return state;
}

} // namespace cloudsim
