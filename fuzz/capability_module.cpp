// A capability library that answers with a fuzzer's bytes. It writes no further than the buffer it is given; all else
// that it says may be a lie.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "byte_source.h"

namespace {

fuzz::ByteSource g_source(nullptr, 0);

uint64_t anySize() {
    constexpr uint64_t SIZES[] = {0, 1, 4, 7, 8, 9, 64, 255, 1024, 1048576, 1048577, UINT32_MAX, UINT64_MAX};
    return g_source.below(2) == 0 ? g_source.byte() : g_source.pick(SIZES);
}

uint32_t answer(void* buffer, uint64_t* size) {
    const size_t kind = g_source.below(8);
    if (kind == 7) return g_source.byte();
    if (kind == 6) {
        *size = anySize();
        return 5;
    }
    const uint64_t count = buffer == nullptr ? 0 : std::min<uint64_t>(*size, 4096);
    for (uint64_t i = 0; i < count; ++i) static_cast<uint8_t*>(buffer)[i] = g_source.byte();
    if (kind > 2) *size = anySize();
    return 0;
}

}  // namespace

#define FUZZ_EXPORT __attribute__((visibility("default")))

extern "C" {

FUZZ_EXPORT void fuzzCapabilityBytes(const uint8_t* data, size_t size) {
    g_source = fuzz::ByteSource(data, size);
}

FUZZ_EXPORT uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) {
    *major = g_source.byte();
    *minor = g_source.byte();
    return g_source.below(4) == 0 ? 1 : 0;
}

FUZZ_EXPORT uint32_t Soc_GetCapability(uint32_t, uint32_t, void* buffer, uint64_t* size) {
    return answer(buffer, size);
}

FUZZ_EXPORT uint32_t Soc_GetCapabilitySerialized(uint32_t, uint32_t, void* buffer, uint64_t* size) {
    return answer(buffer, size);
}
}
