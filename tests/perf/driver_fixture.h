// A perf driver of one core over the fake infrastructure, and its votes in short.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "perf/perf_driver.h"
#include "support/fake_infrastructure.h"

namespace zant::test {

using Texts = std::vector<std::string>;

// Each state's records carry its number, so that a vote tells the state that it was cast for.
inline kor::KORCoreConfig markedCore(uint32_t profile, bool sustains) {
    kor::KORCoreConfig core;
    core.perfProfile = profile;
    core.sustainInferencePerfState = sustains;
    for (uint32_t state = 0; state < core.customPerfStates.size(); ++state) {
        auto& custom = core.customPerfStates[state];
        custom.dcvsControlSet = custom.druControlSet = true;
        custom.dcvs.sleepLatencyUs = 7000;
        custom.dru.druPerfMode = state;
    }
    return core;
}

// "profile 2": what it is, its power mode where that differs, and the state. "rpc 9999" for a polling time.
inline std::string shortOf(const Vote& vote) {
    const Words& first = vote.records[0];
    if (first[0] == 3) return "rpc " + std::to_string(first[1]);
    const std::string state = " " + std::to_string(vote.records.at(1)[5]);
    if (first[6] == 7000) return "custom" + state;
    if (first[3] == 0) return "profile" + state;
    const std::string mode = std::to_string(first[4]) + state;
    if (first[6] == 2000) return "idle " + mode;
    return (first[10] == 0x20 ? "release " : "floor ") + mode;
}

class DriverTest : public ::testing::Test {
protected:
    void begin(SteadyClock& clock, uint32_t profile, bool async = false, bool sustains = false) {
        make(clock, async);
        EXPECT_TRUE(m_driver->initialize(m_infra.provider()));
        finish(profile, sustains);
    }
    void make(SteadyClock& clock, bool async) {
        m_driver.reset();
        soc::DspInfo chip;
        chip.arch = 79;
        m_driver = std::make_unique<kor::KORDevicePerfDriver>(std::vector<soc::DspInfo>{chip}, clock);
        m_driver->m_asyncVoting = async;
    }
    void finish(uint32_t profile, bool sustains = false) {
        m_driver->addDeviceCores(0, {0});
        m_driver->setPerfConfig(markedCore(profile, sustains));
        EXPECT_TRUE(m_driver->createPowerConfigId());
        m_infra.takeCalls();
        m_infra.takeVotes();
    }
    Texts take() {
        Texts texts;
        for (const Vote& vote : m_infra.takeVotes()) texts.push_back(shortOf(vote));
        return texts;
    }
    // The votes that an event on this thread casts.
    Texts after(uint8_t event) {
        EXPECT_TRUE(m_driver->setState(event, false));
        return take();
    }
    // The first vote to come, which another thread casts.
    std::string awaited() {
        EXPECT_TRUE(m_infra.awaitVotes(1));
        const Texts texts = take();
        return texts.empty() ? "" : texts[0];
    }

    FakeInfrastructure m_infra;
    std::unique_ptr<kor::KORDevicePerfDriver> m_driver;
};

}  // namespace zant::test
