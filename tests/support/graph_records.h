// What the graph hooks hand out, in a form that tests compare.
#pragma once

#include <gmock/gmock.h>

#include <array>
#include <bit>
#include <sstream>
#include <string>
#include <vector>

#include "extension/kor_backend.h"

namespace zant::test {

// Copies of a list's records; without a count a null pointer ends it.
inline std::vector<KORGraphCustomConfig> recordsOf(ZantConfigWrapper** list, uint32_t count = UINT32_MAX) {
    std::vector<KORGraphCustomConfig> records;
    for (uint32_t i = 0; list != nullptr && i < count && list[i] != nullptr; ++i) {
        EXPECT_EQ(list[i]->option, ZANT_CONFIG_OPTION_CUSTOM);
        records.push_back(*static_cast<KORGraphCustomConfig*>(list[i]->customConfig));
    }
    return records;
}

// All 56 bytes of each as words in hexadecimal, without the zero words at the end: "1 0 3 40400000|8 0 3|".
inline std::string wordsOf(const std::vector<KORGraphCustomConfig>& records) {
    std::ostringstream text;
    for (const KORGraphCustomConfig& record : records) {
        const auto words = std::bit_cast<std::array<uint32_t, 14>>(record);
        size_t end = words.size();
        while (end > 1 && words[end - 1] == 0) --end;
        for (size_t i = 0; i < end; ++i) text << std::hex << words[i] << (i + 1 < end ? " " : "|");
    }
    return text.str();
}

inline std::string graphDocument(const std::string& members) {
    return R"({"graphs":[{"graph_names":["g"],)" + members + "}]}";
}

}  // namespace zant::test
