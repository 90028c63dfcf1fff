#include "life/LifeGenerator.h"

#include "rest/Resources.h"

namespace cloudsim {
namespace {

using Milliseconds = std::chrono::milliseconds;

} // namespace

LifeGenerator::LifeGenerator(Cloud& cloud, CallPlayer& player, std::uint64_t seed)
    : m_cloud(cloud), m_player(player), m_data(seed + 1) {}

void LifeGenerator::setRunning(bool running) {
    std::lock_guard lock(m_mutex);
    m_running = running;
    if (m_running && !m_scheduled)
        scheduleNext();
}

bool LifeGenerator::isRunning() {
    std::lock_guard lock(m_mutex);
    return m_running;
}

/// With the mutex held, like everything that it leads to.
void LifeGenerator::scheduleNext() {
    m_scheduled = true;
    m_cloud.scheduler.after(Milliseconds(m_data.between(2000, 8000)), [this] {
        std::lock_guard lock(m_mutex);
        m_scheduled = false;
        if (!m_running)
            return;
        // The next step first: this one may fail, on an extension that somebody has just deleted.
        scheduleNext();
        live();
    });
}

void LifeGenerator::live() {
    int draw = m_data.between(0, 99);
    if (draw < 55)
        return ringSomebody();
    if (draw < 75)
        return toggleDnd();
    if (draw < 90)
        return changeContact();
    if (auto id = somebody(true))
        m_player.leaveMessage(*id);
}

std::optional<std::int64_t> LifeGenerator::somebody(bool withSharedLines) {
    return m_cloud.state.with([&](State& state) -> std::optional<std::int64_t> {
        // The first telephone is the one that somebody watches.
        constexpr int firstInHundred = 50;
        if (m_data.between(0, 99) < firstInHundred && state.firstExtensionId() != 0)
            return state.firstExtensionId();
        std::vector<std::int64_t> ids;
        for (const auto& [id, extension] : state.extensions)
            if (withSharedLines || extension.type == "User")
                ids.push_back(id);
        if (ids.empty())
            return std::nullopt;
        return ids[m_data.random()() % ids.size()];
    });
}

void LifeGenerator::ringSomebody() {
    auto id = somebody(true);
    if (!id)
        return;
    PlayedCall call;
    call.extensionId = *id;
    call.members = m_cloud.state.with([&](State& state) {
        return m_data.makeCall(state.extensions.at(*id), std::chrono::system_clock::now(), m_data.between(0, 99));
    });
    bool answered = call.members["result"] == "Accepted" || call.members["result"] == "Call connected";
    call.ring = Milliseconds(m_data.between(1500, 5000));
    call.talk = Milliseconds(answered ? m_data.between(2000, 15000) : 0);
    call.recordDelay = Milliseconds(m_data.between(300, 4000));
    call.members["duration"] = call.talk.count() / 1000;
    m_player.play(std::move(call));
}

void LifeGenerator::toggleDnd() {
    auto id = somebody(false);
    if (!id)
        return;
    auto event = m_cloud.state.with([&](State& state) {
        Extension& extension = state.extensions.at(*id);
        extension.dndStatus = extension.dndStatus == "TakeAllCalls" ? "DoNotAcceptAnyCalls" : "TakeAllCalls";
        return dndEvent(extension);
    });
    m_cloud.hub.publish(event);
}

void LifeGenerator::changeContact() {
    m_cloud.state.with([&](State& state) {
        Extension* user = state.findExtension(state.firstExtensionId());
        if (user == nullptr)
            return;
        auto contacts = user->contacts.all();
        int draw = m_data.between(0, 99);
        if (contacts.empty() || draw < 40) {
            user->contacts.add(m_data.makeContact());
            return;
        }
        auto id = contacts[m_data.random()() % contacts.size()]["id"].get<std::int64_t>();
        if (draw < 80)
            user->contacts.change(id, {{"mobilePhone", m_data.makeContact()["businessPhone"]}});
        else
            user->contacts.remove(id);
    });
}

void LifeGenerator::scheduleLateCalls(int count) {
    constexpr int firstMilliseconds = 8000;
    constexpr int nextMilliseconds = 10000;
    for (int i = 0; i < count; ++i)
        m_cloud.scheduler.after(Milliseconds(firstMilliseconds + i * nextMilliseconds), [this, i] {
            std::lock_guard lock(m_mutex);
            PlayedCall call;
            call.ring = Milliseconds(2000);
            call.recordDelay = Milliseconds(500);
            bool exists = m_cloud.state.with([&](State& state) {
                call.extensionId = state.firstExtensionId();
                Extension* user = state.findExtension(call.extensionId);
                if (user == nullptr)
                    return false;
                // Every first one is missed, every second one answered.
                constexpr int missedKind = 2;
                constexpr int acceptedKind = 0;
                call.members =
                    m_data.makeCall(*user, std::chrono::system_clock::now(), i % 2 == 0 ? missedKind : acceptedKind);
                return true;
            });
            call.talk = Milliseconds(i % 2 == 0 ? 0 : 4000);
            call.members["duration"] = call.talk.count() / 1000;
            if (exists)
                m_player.play(std::move(call));
        });
}

} // namespace cloudsim
