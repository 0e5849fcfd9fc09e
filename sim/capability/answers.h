// The data file's answers as bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace zant_sim {

struct Version {
    uint32_t status;
    uint8_t major;
    uint8_t minor;
};

struct Answer {
    uint32_t status = 0;
    std::vector<uint8_t> bytes;
    std::optional<uint64_t> claimedSize;  // instead of how many there are
    bool isThrown = false;
};

Version readVersion();
// Nothing when the file has no such answer, or not of that kind.
std::optional<Answer> readAnswer(uint32_t category, uint32_t capability, bool isSerialized);

// Writes an answer as the entry points do, never beyond the buffer; the status.
uint32_t giveAnswer(uint32_t category, uint32_t capability, bool isSerialized, void* buffer, uint64_t* size);

}  // namespace zant_sim
