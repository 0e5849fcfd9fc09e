#include "fake_darlink.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>

namespace {

zant::test::FakeDarlink g_state;
std::mutex g_mutex;

bool isAllowed(const char* operation) {
    return g_state.allow == nullptr || g_state.allow(operation);
}

}  // namespace

extern "C" {

FAKE_DARLINK_EXPORT zant::test::FakeDarlink* fakeDarlinkState() {
    return &g_state;
}

FAKE_DARLINK_EXPORT void* darmem_alloc(int heapId, uint32_t flags, uint32_t size) {
    const std::lock_guard lock(g_mutex);
    if (!isAllowed("alloc") || g_state.failAlloc || heapId != 25 || flags != 1) return nullptr;
    // Only the first bytes of a large block are there: nobody writes to it.
    void* address = std::malloc(std::min(size, 4096U));
    g_state.blocks.push_back({address, size, 100 + g_state.blocksMade++});
    return address;
}

FAKE_DARLINK_EXPORT int darmem_to_fd(void* address) {
    const std::lock_guard lock(g_mutex);
    if (!isAllowed("to fd")) return -1;
    for (const auto& block : g_state.blocks) {
        if (block.address != address) continue;
        if (g_state.failToFd) return -1;
        return g_state.descriptor == nullptr ? block.fileDescriptor : g_state.descriptor(block.fileDescriptor);
    }
    return -1;
}

// An address that is not of a living block is freed all the same, for the address sanitizer to tell.
FAKE_DARLINK_EXPORT void darmem_free(void* address) {
    const std::lock_guard lock(g_mutex);
    std::erase_if(g_state.blocks, [address](const auto& block) { return block.address == address; });
    std::free(address);
}
}
