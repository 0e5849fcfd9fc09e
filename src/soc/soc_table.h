// The table of all known chips.
#pragma once

#include <cstdint>
#include <map>

#include "soc/soc_info.h"

namespace soc {

inline constexpr const char* UNKNOWN_CHIP_NAME = "UNKNOWN_VRD";

using SocTable = std::map<uint32_t, SocInfo>;  // by socKey

SocTable makeSocTable();

// The default row and the chips whose CPU and GPU are answered for without a capability library. A row has its names,
// identifiers, CPU and GPU; the other lists hold a default record.
SocTable makeProviderTable();

// The first row in key order that lists the identifier, null for none.
const SocInfo* findById(const SocTable& table, uint32_t id);

}  // namespace soc
