// Config lists as groups of decoded records.
#pragma once

#include <string>
#include <utility>

#include "report/run_report.h"

namespace runhost {

// The list may be null.
template <typename Decode>
RecordGroup decodeList(std::string subject, ZantConfigWrapper** list, uint32_t count, Decode decode) {
    RecordGroup group{std::move(subject), {}};
    for (uint32_t i = 0; list != nullptr && i < count; ++i) group.records.push_back(decode(*list[i]));
    return group;
}

// Of a list that ends in a null pointer, or is null.
inline uint32_t lengthToNull(ZantConfigWrapper** list) {
    uint32_t length = 0;
    while (list != nullptr && list[length] != nullptr) ++length;
    return length;
}

}  // namespace runhost
