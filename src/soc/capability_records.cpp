#include "soc/capability_records.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <stdexcept>

namespace soc {

namespace {

constexpr uint64_t FIRST_BUFFER = 32;
constexpr uint32_t DSP_COUNT = 1;  // records that are filled in at a time
constexpr size_t NAME_SIZE = 32;

// One record's bytes behind the index of its DSP.
class RecordReader {
public:
    explicit RecordReader(const uint8_t* at) : m_at(at) {}

    uint32_t word() {
        uint32_t value = 0;
        for (unsigned shift = 0; shift < 32; shift += 8) value |= uint32_t{*m_at++} << shift;
        return value;
    }
    // Throws without a terminator inside the name's room.
    std::string name() {
        const uint8_t* const begin = m_at;
        m_at += NAME_SIZE;
        const uint8_t* const end = std::find(begin, m_at, uint8_t{0});
        if (end == m_at) throw std::runtime_error("Get Capability fail for serialized type");
        return {begin, end};
    }

private:
    const uint8_t* m_at;
};

// Hands each record to apply, whole; false when the answer is none.
template <class Container, class Apply>
bool readRecords(const CapabilityLibrary& library, uint32_t category, uint32_t capability, size_t recordSize,
                 Container& out, Apply&& apply) {
    try {
        const std::vector<uint8_t> answer = querySerialized(library, category, capability, FIRST_BUFFER);
        if (answer.size() % recordSize != 0) return false;
        Container records;
        for (size_t at = 0; at < answer.size(); at += recordSize) {
            RecordReader record(answer.data() + at);
            if (record.word() >= DSP_COUNT) return false;
            apply(records, record);
        }
        out = std::move(records);
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

}  // namespace

bool getAnswer(const CapabilityLibrary& library, uint32_t category, uint32_t capability, std::vector<uint32_t>& out) {
    return readRecords(library, category, capability, 8, out,
                       [](auto& values, RecordReader& record) { values.push_back(record.word()); });
}

bool getAnswer(const CapabilityLibrary& library, uint32_t category, uint32_t capability,
               std::set<std::pair<uint32_t, uint32_t>>& out) {
    return readRecords(library, category, capability, 12, out, [](auto& pairs, RecordReader& record) {
        const uint32_t first = record.word();
        pairs.emplace(first, record.word());
    });
}

bool getAnswer(const CapabilityLibrary& library, uint32_t category, uint32_t capability,
               std::vector<std::string>& out) {
    return readRecords(library, category, capability, 36, out,
                       [](auto& names, RecordReader& record) { names.push_back(record.name()); });
}

bool getAnswer(const CapabilityLibrary& library, uint32_t category, uint32_t capability,
               std::map<uint32_t, std::pair<std::string, uint32_t>>& out) {
    return readRecords(library, category, capability, 44, out, [](auto& domains, RecordReader& record) {
        const uint32_t key = record.word();
        const uint32_t number = record.word();
        domains.emplace(key, std::pair(record.name(), number));
    });
}

}  // namespace soc
