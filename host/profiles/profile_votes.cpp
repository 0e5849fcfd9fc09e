#include "profiles/profile_votes.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "machine/ledgers.h"
#include "records/log_capture.h"

namespace runhost {

namespace {

// Votes on the host's thread: whatever a hook votes is there when it returns.
constexpr char DOCUMENT[] = R"({"devices": [{"device_id": 0, "async_voting": false}]})";
constexpr char GRAPH[] = "model";

enum Event { DEVICE, FINALIZE_BEGIN, FINALIZE_END, EXECUTE_BEGIN, EXECUTE_END, HOLD_END, FREE_BEGIN, FREE_END };

class Life {
public:
    Life(const ExtensionLibrary& library, const Backend& backend, NamedValue profile)
        : m_backend(backend), m_object(library.create()), m_votes{profile, {}} {
        if (m_object == nullptr) throw std::runtime_error("the library made no object");
    }

    void upToTheHold() {
        require("setupLogging", m_object->setupLogging(captureLog, ZANT_LOG_LEVEL_ERROR));
        require("bindBackendLibrary", m_object->bindBackendLibrary(m_backend.handle()));
        require("loadConfig", m_object->loadConfig(DOCUMENT));
        require("setPerfProfile", m_object->setPerfProfile(m_votes.profile.number));
        require("beforeDeviceCreate", m_object->beforeDeviceCreate(&m_list, &m_count));
        m_backend.createDevice(m_list, m_count, &m_device);
        at(DEVICE, [&] { return m_object->afterDeviceCreate(); });
        ZantConfigWrapper** none = nullptr;
        m_backend.createContext(m_device, none, 0, &m_context);
        void* graph = nullptr;
        m_backend.createGraph(m_context, GRAPH, none, &graph);
        at(FINALIZE_BEGIN, [&] { return m_object->beforeGraphFinalize(); });
        m_backend.finalizeGraph(graph);
        at(FINALIZE_END, [&] { return m_object->afterGraphFinalize(); });
        at(EXECUTE_BEGIN, [&] { return m_object->beforeGraphExecute(GRAPH, &m_list, &m_count); });
        m_backend.executeGraph(graph, none, 0);
        at(EXECUTE_END, [&] { return m_object->afterGraphExecute(); });
    }

    void fromTheHold() {
        at(FREE_BEGIN, [&] { return m_object->beforeContextFree({m_context}); });
        m_backend.freeContext(m_context);
        at(FREE_END, [&] { return m_object->afterContextFree(); });
        require("beforeDeviceFree", m_object->beforeDeviceFree());
        m_backend.freeDevice(m_device);
    }

    uint32_t id() const { return m_id; }
    EventVotes& events(Event event) { return m_votes.events[event]; }
    const ProfileVotes& votes() const { return m_votes; }

private:
    void require(const char* hook, bool succeeded) const {
        if (!succeeded) throw std::runtime_error(std::string(hook) + " failed under " + m_votes.profile.name);
    }

    // Takes what the hook voted on this thread; timers of other lives may vote at the same time.
    template <typename Hook>
    void at(Event event, Hook hook) {
        const size_t first = m_backend.voteCount();
        takeLog();
        require(LIFE_EVENTS[event].cause, hook());
        for (const LogLine& line : takeLog()) events(event).errors.push_back(line.text);
        for (size_t i = first; i < m_backend.voteCount(); ++i) {
            const ZantSimVote vote = m_backend.vote(i);
            if (vote.thread != m_backend.threadNumber() || vote.recordCount == 0) continue;
            m_id = vote.powerConfigId;
            events(event).votes.push_back(decodeVote(vote));
        }
    }

    const Backend& m_backend;
    ExtensionLibrary::Object m_object;
    ProfileVotes m_votes;
    ZantConfigWrapper** m_list = nullptr;
    uint32_t m_count = 0;
    void* m_device = nullptr;
    void* m_context = nullptr;
    uint32_t m_id = 0;
};

// Until no timer has voted for a while.
void waitOutTheHolds(const Backend& backend) {
    constexpr std::chrono::milliseconds hold(400);
    constexpr std::chrono::milliseconds quiet(100);
    std::this_thread::sleep_for(hold);
    for (size_t before = SIZE_MAX; before != backend.voteCount(); std::this_thread::sleep_for(quiet)) {
        before = backend.voteCount();
    }
}

void addTimerVotes(const Backend& backend, size_t first, std::vector<Life>& lives) {
    for (size_t i = first; i < backend.voteCount(); ++i) {
        const ZantSimVote vote = backend.vote(i);
        if (vote.thread == backend.threadNumber()) continue;
        const auto life = std::find_if(lives.begin(), lives.end(),
                                       [&](const Life& candidate) { return candidate.id() == vote.powerConfigId; });
        if (life != lives.end()) life->events(HOLD_END).votes.push_back(decodeVote(vote));
    }
}

}  // namespace

std::vector<ProfileVotes> driveProfiles(const ExtensionLibrary& library, const Backend& backend,
                                        const std::vector<NamedValue>& profiles) {
    const size_t first = backend.voteCount();
    std::vector<Life> lives;
    lives.reserve(profiles.size());
    for (const NamedValue& profile : profiles) lives.emplace_back(library, backend, profile).upToTheHold();
    waitOutTheHolds(backend);
    addTimerVotes(backend, first, lives);
    std::vector<ProfileVotes> votes;
    for (Life& life : lives) {
        life.fromTheHold();
        votes.push_back(life.votes());
    }
    const std::vector<std::string> misuse = misuseIn(backend.ledger());
    if (!misuse.empty()) throw std::runtime_error(misuse.front());
    return votes;
}

}  // namespace runhost
