// The facts of one DSP of a chip. Only arch, domainNames and domainMap have a meaning here; the other fields are
// carried under the numbers by which a capability library answers for them.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace soc {

struct DspInfo {
    uint32_t cap1 = 0;
    uint32_t cap2 = 0;
    uint32_t arch = 0;  // architecture number, 0 for a chip without such a DSP or one that nobody knows
    uint32_t cap4 = 0;
    uint32_t cap5 = 0;
    uint32_t cap6 = 1;
    uint64_t cap7 = 0;
    uint32_t cap8 = 0;
    uint8_t cap9 = 0;
    uint8_t cap10 = 0;
    uint8_t cap11 = 0;
    uint8_t cap12 = 0;
    uint8_t cap13 = 0;
    uint32_t cap14 = 1;
    uint32_t cap15 = 0x7FFFFFFFU;
    std::vector<uint32_t> cap16;
    uint32_t cap17 = 0;
    uint32_t cap18 = 0;
    uint32_t cap19 = 0;
    uint32_t cap20 = 0;
    uint32_t cap21 = 0;
    uint32_t cap22 = 0;
    uint32_t cap23 = 0;
    uint32_t cap24 = 0;
    uint32_t cap25 = 0;
    uint8_t cap26 = 0;
    uint8_t cap27 = 0;
    uint8_t cap28 = 0;
    uint8_t cap29 = 0;
    uint8_t cap30 = 0;
    uint8_t cap31 = 0;
    uint8_t cap32 = 0;
    uint8_t cap33 = 0;
    uint8_t cap34 = 0;
    uint8_t cap36 = 0;
    uint8_t cap37 = 0;
    uint8_t cap38 = 1;
    uint32_t cap39 = 0;
    uint32_t cap40 = 0;
    uint32_t cap41 = 0;
    uint32_t cap42 = 0;
    float cap43 = 0.0F;
    float cap44 = 0.0F;
    uint32_t cap45 = 0;
    std::set<std::pair<uint32_t, uint32_t>> cap46;
    std::vector<std::string> domainNames;
    std::map<uint32_t, std::pair<std::string, uint32_t>> domainMap;  // key to name and domain number
    uint8_t cap49 = 0;
    uint32_t cap50 = 0;
    uint32_t cap51 = 1;
};

}  // namespace soc
