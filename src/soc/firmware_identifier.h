// The running chip's identifier, from the machine's firmware tables.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace soc {

// The running chip's identifier, 0 when nothing answers. Once the processor table has named a chip, known or not, the
// answer is kept for the process. Any thread.
uint32_t getSocModelFromFirmware();

// The same over tables from anywhere, with a cache of its own.
class FirmwareIdentifier {
public:
    // Gives the size of the table of four letters, 0 for none; fills the buffer in when it holds the whole table.
    using TableReader = size_t (*)(const char* name, void* buffer, size_t capacity);

    explicit constexpr FirmwareIdentifier(TableReader reader) : m_readTable(reader) {}

    uint32_t identify();

private:
    static constexpr uint32_t NOT_CACHED = 0xFFFFFFFFU;

    // The bytes of a table that were read, 0 when it is absent or larger than the working buffer.
    size_t readTable(const char* name, uint8_t* buffer) const;

    TableReader m_readTable;
    // Two callers may come at once; both store the same.
    std::atomic<uint32_t> m_cached{NOT_CACHED};
};

}  // namespace soc
