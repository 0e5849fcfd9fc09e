// One chip's facts, as lists of records.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/mutex.h"
#include "soc/dsp_info.h"

namespace soc {

enum class TmxType : uint32_t { none = 0 };
// A model number, or none for a chip without such a GPU.
enum class GpuType : uint32_t { none = 0 };

struct CpuInfo {
    TmxType tmxType = TmxType::none;
    uint64_t numThreads = 0;
};

struct GpuInfo {
    GpuType type = GpuType::none;
    std::string description = "Unknown";
    uint64_t maxWorkGroupSize = 0;
    uint64_t image2DMaxHeight = 0;
    uint64_t image2DMaxWidth = 0;
    uint64_t maxBufferAllocSize = 0;
    uint32_t baseAddrAlignment = 0;
    uint64_t image2DArrayMaxHeight = 0;
    uint64_t image2DArrayMaxWidth = 0;
    uint64_t image2DArrayMaxDepth = 0;
    uint64_t image1DMaxWidth = 0x8000000;
};

struct SocPair {
    uint32_t first = 0;
    uint32_t second = 16;
};

struct AuxInfo {
    uint32_t number = 0;
    uint8_t present = 0;
    uint32_t size = 0;
    std::vector<std::array<uint32_t, 5>> entries;
};

struct SocIdentity {
    int32_t number = 0;
    std::string name;
};

// A chip's data, as a row of the table gives it.
struct SocFacts {
    uint32_t socKey = 0;
    std::vector<uint32_t> socIds;  // identifiers from the firmware that select the row
    std::vector<std::string> aliases;
    std::vector<DspInfo> dspInfos;
    std::vector<CpuInfo> cpuInfos;
    std::vector<GpuInfo> gpuInfos;
    std::vector<SocPair> socPairs;
    std::vector<AuxInfo> auxInfos;
    std::string name;
    std::set<std::string> nameSet;  // the name and its other spellings
};

// Whether something was done that is to be done once: a call that throws leaves it to the next one.
struct OnceFlag {
    zant::Mutex mutex;  // held while it is done
    bool isDone GUARDED_BY(mutex) = false;
};

// Any thread may call getDspInfosOnce. It alone writes: the other getters are for after its first return.
class SocInfo {
public:
    // Leaves no record list empty: one that is gets a default record, so that a reader may take element 0.
    explicit SocInfo(SocFacts facts);
    virtual ~SocInfo() = default;
    SocInfo(const SocInfo&) = delete;
    SocInfo& operator=(const SocInfo&) = delete;

    virtual SocIdentity getSocIdentity();
    virtual std::vector<CpuInfo> getCpuInfos();
    virtual std::vector<GpuInfo> getGpuInfos();
    virtual std::vector<DspInfo> getDspInfos();
    virtual std::vector<SocPair> getSocPairs();
    virtual std::vector<AuxInfo> getAuxInfos();

    // The member dspInfos. Where there are once flags the first call fills it in by getDspInfos, and concurrent ones
    // wait for that; afterwards the list is read-only.
    const std::vector<DspInfo>& getDspInfosOnce();

    const SocFacts& facts() const noexcept { return m_facts; }

protected:
    static constexpr size_t DSP_INFOS_FLAG = 3;

    // Takes a row's facts over; the once flags stay.
    void setFacts(SocFacts facts) { m_facts = std::move(facts); }
    void makeOnceFlags();

private:
    SocFacts m_facts;
    // One for each getter, in their order; null in the table's rows, whose facts are never asked of anybody else.
    std::array<std::shared_ptr<OnceFlag>, 6> m_onceFlags;
};

}  // namespace soc
