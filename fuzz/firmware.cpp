// Firmware tables: the identifier's answer to any bytes in either.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "soc/firmware_identifier.h"

namespace {

const uint8_t* g_data = nullptr;
size_t g_size = 0;
size_t g_firstSize = 0;  // of FACP; the rest is PPTT

// The tables lie in blocks of just their size only when they are copied: the buffer is the identifier's.
size_t readTable(const char* name, void* buffer, size_t capacity) {
    const bool isFirst = std::strcmp(name, "FACP") == 0;
    const uint8_t* bytes = isFirst ? g_data : g_data + g_firstSize;
    const size_t size = isFirst ? g_firstSize : g_size - g_firstSize;
    if (buffer != nullptr && size <= capacity && size != 0) std::memcpy(buffer, bytes, size);
    return size;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    g_data = data + 2;
    g_size = size - 2;
    g_firstSize = std::min(size_t{data[0]} + 256 * size_t{data[1]}, g_size);
    soc::FirmwareIdentifier identifier(readTable);
    const uint32_t first = identifier.identify();
    if (identifier.identify() != first) std::abort();
    return 0;
}
