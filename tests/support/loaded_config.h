// A parser with the records that it fills, and tables of what documents give.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "config/config_parser.h"
#include "support/log_capture.h"

namespace zant::test {

struct ConfigRecords {
    kor::KORConfigParser parser;
    std::vector<kor::KORDeviceConfig> devices;
    std::vector<kor::KORGraphConfig> graphs;
    std::vector<kor::KORContextConfig> contexts;
    kor::KORGroupContextConfig groupContext;
    kor::KORMemoryConfig memory;

    bool load(const std::string& config) {
        return parser.parseConfig(config, devices, graphs, contexts, groupContext, memory);
    }
};

// What one load of a document gave, with the lines up to a level as "1 text".
struct LoadedConfig : ConfigRecords {
    bool result = false;
    std::vector<LogLine> lines;
    std::vector<std::string> texts;
};

inline LoadedConfig loadDocument(const std::string& config, ZantLogLevel maxLevel = ZANT_LOG_LEVEL_WARN) {
    LogCapture log(maxLevel);
    LoadedConfig loaded;
    loaded.result = loaded.load(config);
    loaded.texts = log.texts();
    loaded.lines = log.take();
    return loaded;
}

// One member of an object, the line that reading it logs, and the field that it fills.
template <class Record>
struct OptionRow {
    std::string member;
    std::string value;   // JSON
    std::string format;  // with one conversion; '@' stands for the member
    double (*field)(const Record& record);
};

template <auto Field, class Record>
double fieldOf(const Record& record) {
    return static_cast<double>(record.*Field);
}

// before and after: the document around the member; find: where the record that it fills stands.
template <class Record, size_t N, class Find>
void checkOptions(const OptionRow<Record> (&rows)[N], const std::string& before, const std::string& after, Find find) {
    for (auto [member, value, format, field] : rows) {
        SCOPED_TRACE(member);
        if (const size_t at = format.find('@'); at != std::string::npos) format.replace(at, 1, member);
        const size_t percent = format.find('%');
        const std::string conversion = format.substr(percent, format.find_first_of("dsu", percent) + 1 - percent);
        const double number = value == "true" ? 1 : std::strtod(value.c_str(), nullptr);
        const bool isWord = value == "true" || value == "false";
        std::string shown = isWord && conversion != "%s" ? (value == "true" ? "1" : "0") : value;
        if (conversion == "%lu") shown = std::to_string(static_cast<unsigned long>(std::stoull(value)));
        EXPECT_NE(field(Record()), number) << "the default proves nothing";
        const LoadedConfig loaded = loadDocument(before + "\"" + member + "\":" + value + after, ZANT_LOG_LEVEL_INFO);
        EXPECT_TRUE(loaded.result);
        EXPECT_EQ(field(find(loaded)), number);
        ASSERT_EQ(loaded.lines.size(), 1U);
        EXPECT_EQ(loaded.lines[0].format, format);
        EXPECT_EQ(loaded.texts[0], "3 " + std::string(format).replace(percent, conversion.size(), shown));
    }
}

// The error and warning lines and the result that a document costs.
struct Complaint {
    std::string config;
    bool result;
    std::vector<std::string> texts;
};

inline void checkComplaints(const std::vector<Complaint>& complaints) {
    for (const Complaint& complaint : complaints) {
        const LoadedConfig loaded = loadDocument(complaint.config);
        EXPECT_EQ(loaded.result, complaint.result) << complaint.config;
        EXPECT_EQ(loaded.texts, complaint.texts) << complaint.config;
    }
}

}  // namespace zant::test
