#include "soc/firmware_identifier.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "platform/system.h"

namespace soc {

namespace {

// A larger table counts as one that cannot be read.
constexpr size_t BUFFER_SIZE = 65536;
constexpr size_t HEADER_SIZE = 36;
constexpr size_t LENGTH_AT = 4;
constexpr size_t OEM_REVISION_AT = 24;
constexpr uint32_t OEM_REVISION_OF_405 = 0x8180;
constexpr uint8_t ID_STRUCTURE = 2;
constexpr size_t FIRST_ID_BEHIND = 8;  // bytes behind the structure's type
constexpr size_t SECOND_ID_BEHIND = 16;

struct FirmwareRow {
    uint32_t first;
    uint32_t second;
    uint32_t identifier;
};

constexpr FirmwareRow FIRMWARE_MAP[] = {
    {0x88, 0x22B, 538}, {0x88, 0x267, 538}, {0x88, 0x268, 538}, {0x88, 0x2C5, 538}, {0x88, 0x2C6, 538},
    {0x9A, 0x27B, 538}, {0x9A, 0x2C7, 538}, {0xA1, 0x296, 662}, {0xA1, 0x2BA, 662}, {0xA1, 0x2BB, 662},
    {0xA8, 0x2B5, 693}, {0xA8, 0x2D8, 693}, {0xA8, 0x2D9, 693}, {0x71, 0x1C1, 435}, {0x76, 0x1E7, 475},
    {0x76, 0x1E8, 475}, {0x76, 0x222, 475}, {0x76, 0x229, 475}, {0x76, 0x233, 475}, {0x76, 0x1F1, 497},
    {0x76, 0x1F2, 498},
};

template <class Word>
Word wordAt(const uint8_t* bytes, size_t offset) {
    Word word = 0;
    std::memcpy(&word, bytes + offset, sizeof(word));
    return word;
}

uint32_t identifierOfKey(uint64_t key) {
    for (const FirmwareRow& row : FIRMWARE_MAP) {
        if (((uint64_t{row.first} << 32U) | row.second) == key) return row.identifier;
    }
    return 0;
}

// The key of the first ID structure, 0 for none. The body is looked through byte by byte, not node by node: the first
// byte that says so begins the structure. As many bytes are looked at as the whole table claims to have; that may be
// more than were read, or fewer.
uint64_t keyOfProcessorTable(const uint8_t* table, size_t size) {
    if (size < HEADER_SIZE) return 0;
    const uint8_t* const body = table + HEADER_SIZE;
    const size_t bodySize = size - HEADER_SIZE;
    const uint8_t* const end = body + std::min<size_t>(wordAt<uint32_t>(table, LENGTH_AT), bodySize);
    const auto at = static_cast<size_t>(std::find(body, end, ID_STRUCTURE) - body);
    if (body + at == end || at + SECOND_ID_BEHIND + sizeof(uint64_t) > bodySize) return 0;
    return wordAt<uint64_t>(body, at + SECOND_ID_BEHIND) | (wordAt<uint64_t>(body, at + FIRST_ID_BEHIND) << 32U);
}

constinit FirmwareIdentifier g_firmwareIdentifier(zant::system::readFirmwareTable);

}  // namespace

uint32_t getSocModelFromFirmware() {
    return g_firmwareIdentifier.identify();
}

size_t FirmwareIdentifier::readTable(const char* name, uint8_t* buffer) const {
    if (m_readTable(name, nullptr, 0) == 0) return 0;
    const size_t read = m_readTable(name, buffer, BUFFER_SIZE);
    return read > BUFFER_SIZE ? 0 : read;
}

uint32_t FirmwareIdentifier::identify() {
    const uint32_t cached = m_cached.load(std::memory_order_relaxed);
    if (cached < NOT_CACHED) return cached;
    const std::unique_ptr<uint8_t[]> buffer(new (std::nothrow) uint8_t[BUFFER_SIZE]());
    if (buffer == nullptr) return 0;
    const size_t fixedSize = readTable("FACP", buffer.get());
    if (fixedSize == 0) return 0;
    if (fixedSize >= OEM_REVISION_AT + sizeof(uint32_t) &&
        wordAt<uint32_t>(buffer.get(), OEM_REVISION_AT) == OEM_REVISION_OF_405) {
        return 405;  // not cached
    }
    const size_t size = readTable("PPTT", buffer.get());
    if (size == 0) return 0;
    const uint64_t key = keyOfProcessorTable(buffer.get(), size);
    if (key == 0) return 0;
    const uint32_t identifier = identifierOfKey(key);
    m_cached.store(identifier, std::memory_order_relaxed);
    return identifier;
}

}  // namespace soc
