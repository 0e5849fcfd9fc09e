#include "power_ids.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "ledger.h"
#include "thread_name.h"

namespace zant::sim {

namespace {

constexpr uint32_t DEFAULT_CLIENT_ID = 0;

bool holdsCorners(const std::vector<PowerConfigRecord>& records) {
    return std::any_of(records.begin(), records.end(), [](const PowerConfigRecord& record) {
        return record.option == POWER_OPTION_DCVS || record.option == POWER_OPTION_DCVS_EXP;
    });
}

std::string idText(uint32_t id) {
    return "power config id " + std::to_string(id);
}

}  // namespace

PowerIds::PowerIds() : m_ids{{DEFAULT_CLIENT_ID, State{0, 0, true, std::nullopt}}} {}

uint32_t PowerIds::create(uint32_t deviceId, uint32_t coreId) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto id = static_cast<uint32_t>(m_ids.size());
    m_ids[id] = State{deviceId, coreId, true, std::nullopt};
    return id;
}

std::string PowerIds::destroy(uint32_t id) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_ids.find(id);
    if (found == m_ids.end()) return idText(id) + " was never made";
    if (!found->second.alive) return idText(id) + " is destroyed already";
    found->second.alive = id == DEFAULT_CLIENT_ID;
    found->second.current.reset();
    append(id, {});
    return {};
}

std::string PowerIds::vote(uint32_t id, std::vector<PowerConfigRecord> records) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_ids.find(id);
    if (found == m_ids.end()) return idText(id) + " was never made";
    if (!found->second.alive) return idText(id) + " is destroyed";
    const Entry& entry = append(id, std::move(records));
    if (holdsCorners(entry.records)) found->second.current = entry;
    return {};
}

const PowerIds::Entry& PowerIds::append(uint32_t id, std::vector<PowerConfigRecord> records) {
    m_timeLine.push_back(
        {m_timeLine.size(), ledger().elapsedNs(), ZantSim_threadNumber(), id, threadName(), std::move(records)});
    return m_timeLine.back();
}

size_t PowerIds::liveCount() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto alive = std::count_if(m_ids.begin(), m_ids.end(), [](const auto& item) {
        return item.first != DEFAULT_CLIENT_ID && item.second.alive;
    });
    return static_cast<size_t>(alive);
}

void PowerIds::clearTimeLine() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_timeLine.clear();
}

size_t PowerIds::timeLineSize() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_timeLine.size();
}

bool PowerIds::timeLineEntry(size_t index, ZantSimVote& vote) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (index >= m_timeLine.size()) return false;
    fill(m_timeLine[index], vote);
    return true;
}

bool PowerIds::currentVote(uint32_t id, ZantSimVote& vote) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_ids.find(id);
    if (found == m_ids.end() || !found->second.current) return false;
    fill(*found->second.current, vote);
    return true;
}

void PowerIds::fill(const Entry& entry, ZantSimVote& vote) const {
    const State& state = m_ids.at(entry.id);
    vote = ZantSimVote{};
    vote.sequence = entry.sequence;
    vote.timeNs = entry.timeNs;
    vote.thread = entry.thread;
    vote.powerConfigId = entry.id;
    vote.deviceId = state.deviceId;
    vote.coreId = state.coreId;
    vote.recordCount = static_cast<uint32_t>(entry.records.size());
    entry.threadName.copy(vote.threadName, ZANT_SIM_THREAD_NAME - 1);
    std::copy(entry.records.begin(), entry.records.end(), vote.records);
}

PowerIds& powerIds() {
    static PowerIds instance;
    return instance;
}

}  // namespace zant::sim

size_t ZantSim_voteCount() {
    return zant::sim::powerIds().timeLineSize();
}

uint32_t ZantSim_vote(size_t index, ZantSimVote* vote) {
    return vote != nullptr && zant::sim::powerIds().timeLineEntry(index, *vote) ? 1 : 0;
}

uint32_t ZantSim_currentVote(uint32_t powerConfigId, ZantSimVote* vote) {
    return vote != nullptr && zant::sim::powerIds().currentVote(powerConfigId, *vote) ? 1 : 0;
}

size_t ZantSim_livePowerConfigIds() {
    return zant::sim::powerIds().liveCount();
}

uint64_t ZantSim_elapsedNs() {
    return zant::sim::ledger().elapsedNs();
}

uint32_t ZantSim_threadNumber() {
    static std::atomic<uint32_t> count{0};
    thread_local const uint32_t number = ++count;
    return number;
}

void ZantSim_threadName(char name[ZANT_SIM_THREAD_NAME]) {
    const std::string text = zant::sim::threadName();
    name[text.copy(name, ZANT_SIM_THREAD_NAME - 1)] = 0;
}
