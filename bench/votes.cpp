// A vote of four records, assembled and sent with the log filtered, against the two calls of the infrastructure that
// it comes to, made under a lock.
#include <cstdlib>
#include <mutex>

#include "bench/counted_allocations.h"
#include "bench/fake_infrastructure.h"
#include "bench/harness.h"
#include "perf/power_votes.h"
#include "platform/logger.h"

namespace {

void dropMessage(const char*, ZantLogLevel, uint64_t, va_list) {}

// Profile "burst" with settings for DRU, CENG and DDR.
void setUp(zant::kor::PowerVotes& votes, const ZantProviderRecord& provider) {
    soc::DspInfo chip;
    chip.arch = 79;
    zant::kor::KORCoreConfig core;
    core.perfProfile = 5;
    core.ddrPerfMode = true;
    core.customPerfStates[2].druControlSet = core.customPerfStates[2].cengControlSet = true;
    votes.setDspInfos({chip});
    votes.setBackendInterface(provider);
    votes.addDeviceCores(0, {0});
    votes.setPerfConfig(core);
    if (!votes.createPowerConfigId(true)) std::abort();
}

}  // namespace

int main() {
    zant::log::setupLogging(dropMessage, ZANT_LOG_LEVEL_ERROR);
    ZantProviderRecord provider{};
    provider.deviceGetInfrastructure = bench::getInfrastructure;
    zant::kor::PowerVotes votes;
    setUp(votes, provider);
    const auto vote = [&votes] {
        if (!votes.voteProfile(2)) std::abort();
    };

    PowerConfigRecord records[4] = {};
    const PowerConfigRecord* array[] = {&records[0], &records[1], &records[2], &records[3], nullptr};
    std::mutex mutex;
    const auto calls = [&] {
        bench::keep(provider);
        const std::lock_guard lock(mutex);
        const ZantPerfInfrastructure* infrastructure = nullptr;
        if (provider.deviceGetInfrastructure(&infrastructure) != 0) std::abort();
        bench::keep(infrastructure);
        if (infrastructure->setPowerConfig(1, array) != 0) std::abort();
    };

    const bench::Comparison result = bench::compare(vote, calls, 41, 200'000);
    const size_t before = bench::t_allocations;
    for (int i = 0; i < 1000; ++i) vote();
    const size_t allocations = bench::t_allocations - before;
    if (bench::g_recordsTaken != 4) std::abort();
    std::printf("vote of four records %.1f ns, bare calls %.1f ns\n", result.subject * 1e9, result.floor * 1e9);
    bench::figure("votes/four_records", result.ratio, 3.00);
    bench::figure("votes/allocations", static_cast<double>(allocations), 0.0);
}
