// What the reference host reports as JSON.
#pragma once

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <string>

#include "plugin/support/process.h"

namespace testing_support {

inline rapidjson::Document json(const std::string& arguments) {
    const ProcessResult result = runHost(arguments + " --json");
    rapidjson::Document report;
    EXPECT_FALSE(report.Parse(result.output.c_str()).HasParseError()) << result.output;
    return report;
}

}  // namespace testing_support
