#include "faults/FaultEngine.h"

#include "base/BadInput.h"

#include <algorithm>
#include <set>

namespace cloudsim {
namespace {

const std::set<std::string> conditions{"path",  "pathPattern",       "method",         "nth",
                                       "times", "afterMilliseconds", "forMilliseconds"};

std::int64_t count(const Json& description, const char* key, std::int64_t otherwise) {
    return numberMember(description, key, otherwise, notNegative);
}

std::string condition(const Json& description, const char* key) {
    return requireText(description.value(key, Json("")), key);
}

} // namespace

FaultEngine::Armed FaultEngine::read(const Json& description) {
    if (!description.is_object())
        throw BadInput("a fault is an object");
    bool acts = false;
    for (const auto& [key, value] : description.items()) {
        if (isFaultAction(key))
            acts = true;
        else if (conditions.count(key) == 0)
            throw BadInput(key + ": is no condition and no action of a fault");
    }
    if (!acts)
        throw BadInput("a fault needs an action");
    faultActionsFromJson(description);

    Armed fault;
    fault.description = description;
    fault.path = condition(description, "path");
    fault.method = condition(description, "method");
    try {
        if (std::string pattern = condition(description, "pathPattern"); !pattern.empty())
            fault.pattern.emplace(pattern);
    } catch (const std::regex_error&) {
        throw BadInput("pathPattern: is no regular expression");
    }
    fault.firstRequest = static_cast<std::uint64_t>(std::max<std::int64_t>(1, count(description, "nth", 1)));
    fault.times = static_cast<std::uint64_t>(count(description, "times", 1));
    fault.begins =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(count(description, "afterMilliseconds", 0));
    fault.ends = description.contains("forMilliseconds")
                     ? fault.begins + std::chrono::milliseconds(count(description, "forMilliseconds", 0))
                     : SteadyTime::max();
    return fault;
}

std::uint64_t FaultEngine::arm(const Json& description) {
    Armed fault = read(description);
    std::lock_guard lock(m_mutex);
    fault.id = m_nextId++;
    m_faults.push_back(std::move(fault));
    return m_faults.back().id;
}

bool FaultEngine::disarm(std::uint64_t id) {
    std::lock_guard lock(m_mutex);
    auto before = m_faults.size();
    m_faults.remove_if([id](const Armed& fault) { return fault.id == id; });
    return m_faults.size() != before;
}

void FaultEngine::disarmAll() {
    std::lock_guard lock(m_mutex);
    m_faults.clear();
}

Json FaultEngine::list() {
    std::lock_guard lock(m_mutex);
    Json result = Json::array();
    for (const auto& fault : m_faults)
        result.push_back({{"id", fault.id}, {"fault", fault.description}, {"seen", fault.seen}, {"done", fault.done}});
    return result;
}

bool FaultEngine::concerns(const Armed& fault, const std::string& method, const std::string& target, SteadyTime now) {
    return (fault.method.empty() || fault.method == method) && target.find(fault.path) != std::string::npos &&
           (!fault.pattern || std::regex_search(target, *fault.pattern)) && now >= fault.begins && now < fault.ends;
}

FaultEngine::Hit FaultEngine::hit(const std::string& method, const std::string& target) {
    std::lock_guard lock(m_mutex);
    Hit result;
    Json actions = Json::object();
    auto now = std::chrono::steady_clock::now();
    for (auto& fault : m_faults) {
        if (!concerns(fault, method, target, now) || ++fault.seen < fault.firstRequest)
            continue;
        if (fault.times != 0 && fault.done >= fault.times)
            continue;
        ++fault.done;
        result.ids.push_back(fault.id);
        for (const auto& [key, value] : fault.description.items())
            if (isFaultAction(key) && !actions.contains(key))
                actions[key] = value;
    }
    result.actions = faultActionsFromJson(actions);
    return result;
}

bool FaultEngine::isArmed(const std::vector<std::uint64_t>& ids) {
    std::lock_guard lock(m_mutex);
    return std::any_of(m_faults.begin(), m_faults.end(),
                       [&](const Armed& fault) { return std::find(ids.begin(), ids.end(), fault.id) != ids.end(); });
}

} // namespace cloudsim
