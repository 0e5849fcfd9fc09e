// A parser with the records that it fills, and what documents give.
#pragma once

#include <gtest/gtest.h>

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
    std::vector<std::string> texts;
};

inline LoadedConfig loadDocument(const std::string& config, ZantLogLevel maxLevel = ZANT_LOG_LEVEL_WARN) {
    LogCapture log(maxLevel);
    LoadedConfig loaded;
    loaded.result = loaded.load(config);
    loaded.texts = log.texts();
    return loaded;
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
