// Decisions taken from a fuzzer's bytes. Bytes that have run out are 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace fuzz {

class ByteSource {
public:
    ByteSource(const uint8_t* data, size_t size) : m_next(data), m_end(data + size) {}

    uint8_t byte() { return m_next == m_end ? uint8_t{0} : *m_next++; }
    // A number below count, which is at least 1.
    size_t below(size_t count) {
        size_t number = byte();
        if (count > 256) number = number << 8U | byte();
        return number % count;
    }
    template <class Table>
    const auto& pick(const Table& table) {
        return std::begin(table)[below(std::size(table))];
    }

private:
    const uint8_t* m_next;
    const uint8_t* m_end;
};

}  // namespace fuzz
