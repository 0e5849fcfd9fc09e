// Serialized answers of a capability library: arrays of packed little-endian records.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "soc/capability_library.h"

namespace soc {

// As getAnswer of a number: true with out set, or false with out as it was. The answer is one of DSP_CATEGORY, and a
// record that is not of the first DSP makes it none.

// Records of a value.
bool getAnswer(const CapabilityLibrary& library, uint32_t category, uint32_t capability, std::vector<uint32_t>& out);
// Records of two values.
bool getAnswer(const CapabilityLibrary& library, uint32_t category, uint32_t capability,
               std::set<std::pair<uint32_t, uint32_t>>& out);
// Records of a name.
bool getAnswer(const CapabilityLibrary& library, uint32_t category, uint32_t capability, std::vector<std::string>& out);
// Records of a key, a domain number and a name; the first record of a key stands.
bool getAnswer(const CapabilityLibrary& library, uint32_t category, uint32_t capability,
               std::map<uint32_t, std::pair<std::string, uint32_t>>& out);

}  // namespace soc
