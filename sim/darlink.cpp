// The simulated RPC client library: shared memory in blocks, each with one descriptor.
#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "ledger.h"
#include "shared_memory.h"
#include "zant_sim/sim_darlink.h"

using namespace zant::sim;

namespace {

struct Block {
    uint32_t number;
    SharedMemory memory;
};

struct Blocks {
    std::mutex mutex;
    std::vector<Block> living;
    uint32_t made = 0;
};

Blocks& blocks() {
    static Blocks instance;
    return instance;
}

std::string blockName(const Block& block) {
    return "block " + std::to_string(block.number);
}

auto findBlock(Blocks& all, const void* address) {
    return std::find_if(all.living.begin(), all.living.end(),
                        [&](const Block& block) { return block.memory.address() == address; });
}

// What the ledger says of a call: the call itself, what came of it, and what was wrong with it.
void note(const std::string& call, const std::string& result, const std::string& misuse) {
    ledger().add(call + " -> " + result, misuse);
}

std::string allocMisuse(int heapId, uint32_t flags) {
    const bool expected = heapId == DARMEM_HEAP_ID_SYSTEM && flags == DARMEM_FLAG_DEFAULT;
    return expected ? "" : "darmem_alloc: expected heap 25 and flags 1";
}

}  // namespace

void* darmem_alloc(int heapId, uint32_t flags, uint32_t size) {
    const std::string call = "darmem_alloc(heap " + std::to_string(heapId) + ", flags " + std::to_string(flags) + ", " +
                             std::to_string(size) + " bytes)";
    const bool scripted = ledger().enter("darmem_alloc") != 0;
    const std::string misuse = allocMisuse(heapId, flags);
    SharedMemory memory = scripted || !misuse.empty() || size == 0 ? SharedMemory() : SharedMemory(size);
    void* address = memory.address();
    if (address == nullptr) {
        note(call, scripted ? "null (scripted failure)" : "null", scripted ? "" : misuse);
        return nullptr;
    }
    Blocks& all = blocks();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.living.push_back({++all.made, std::move(memory)});
    note(call, blockName(all.living.back()), {});
    return address;
}

void darmem_free(void* address) {
    const bool scripted = ledger().enter("darmem_free") != 0;
    Blocks& all = blocks();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto block = findBlock(all, address);
    if (block == all.living.end()) {
        note("darmem_free(no block)", "nothing", "darmem_free: the address is no living block's");
        return;
    }
    note("darmem_free(" + blockName(*block) + ")", scripted ? "nothing (scripted failure)" : "freed", {});
    if (!scripted) all.living.erase(block);
}

int darmem_to_fd(void* address) {
    constexpr int failure = -1;
    const bool scripted = ledger().enter("darmem_to_fd") != 0;
    Blocks& all = blocks();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto block = findBlock(all, address);
    if (block == all.living.end()) {
        note("darmem_to_fd(no block)", "-1", "darmem_to_fd: the address is no living block's");
        return failure;
    }
    const int descriptor = scripted ? failure : block->memory.descriptor();
    note("darmem_to_fd(" + blockName(*block) + ")",
         scripted ? "-1 (scripted failure)" : "descriptor " + std::to_string(descriptor), {});
    return descriptor;
}

size_t ZantSim_blockCount() {
    Blocks& all = blocks();
    const std::lock_guard<std::mutex> lock(all.mutex);
    return all.living.size();
}

uint32_t ZantSim_block(size_t index, ZantSimBlock* block) {
    Blocks& all = blocks();
    const std::lock_guard<std::mutex> lock(all.mutex);
    if (block == nullptr || index >= all.living.size()) return 0;
    const Block& found = all.living[index];
    *block = {found.memory.address(), found.memory.size(), found.number, found.memory.descriptor()};
    return 1;
}

void ZantSim_clear() {
    ledger().clear();
}
