// The simulated RPC client library as the extension library uses it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "plugin/support/loaded.h"
#include "zant_sim/sim_darlink.h"

namespace testing_support {

class Darlink : public Simulated {
public:
    Darlink()
        : Simulated(path().c_str()),
          alloc(find<DarmemAllocFn>("darmem_alloc")),
          free(find<DarmemFreeFn>("darmem_free")),
          toFd(find<DarmemToFdFn>("darmem_to_fd")) {}

    static std::string path() {
        return (std::filesystem::path(SIM_BACKEND_LIBRARY).parent_path() / "windows/drivers/libdarlink.dll").string();
    }
    void* make(uint32_t size) const { return alloc(DARMEM_HEAP_ID_SYSTEM, DARMEM_FLAG_DEFAULT, size); }
    std::vector<ZantSimBlock> blocks() const {
        std::vector<ZantSimBlock> living(find<ZantSimBlockCountFn>("ZantSim_blockCount")());
        for (size_t i = 0; i < living.size(); ++i) find<ZantSimBlockFn>("ZantSim_block")(i, &living[i]);
        return living;
    }

    const DarmemAllocFn alloc;
    const DarmemFreeFn free;
    const DarmemToFdFn toFd;
};

}  // namespace testing_support
