// A run of the reference host: its exit status and what it printed.
#pragma once

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "machine/platform.h"
#include "plugin/support/system.h"

namespace testing_support {

struct ProcessResult {
    int status;  // -1 when it did not exit by itself
    std::string output;

    std::vector<std::string> lines() const {
        std::vector<std::string> all;
        std::istringstream stream(output);
        for (std::string line; std::getline(stream, line);) all.push_back(line);
        return all;
    }
};

// Everything up to the stream's end.
inline std::string readStream(std::FILE* stream) {
    std::string text;
    std::array<char, 4096> block{};
    while (const size_t length = std::fread(block.data(), 1, block.size(), stream)) text.append(block.data(), length);
    return text;
}

inline ProcessResult runHost(const std::string& arguments) {
    return runProgram(RUNHOST, arguments);
}

// What the host reports as JSON.
inline rapidjson::Document json(const std::string& arguments) {
    const ProcessResult result = runHost(arguments + " --json");
    rapidjson::Document report;
    EXPECT_FALSE(report.Parse(result.output.c_str()).HasParseError()) << result.output;
    return report;
}

// The arguments that make runhost run as another machine; none where the library sees the real one only.
inline std::string asMachine(const std::string& name) {
    return runhost::platform::canStandIn() ? " --machine " + name : "";
}

inline std::string example(const std::string& name) {
    return EXAMPLES_DIR "/" + name;
}

inline std::string readText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A file of this test's own; gone with the object.
class TemporaryDocument {
public:
    explicit TemporaryDocument(const std::string& text)
        : m_path(testing::TempDir() + "runhost_" + testing::UnitTest::GetInstance()->current_test_info()->name() +
                 ".json") {
        std::ofstream(m_path, std::ios::binary) << text;
    }
    TemporaryDocument(const TemporaryDocument&) = delete;
    TemporaryDocument& operator=(const TemporaryDocument&) = delete;
    ~TemporaryDocument() { std::remove(m_path.c_str()); }

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

}  // namespace testing_support
