#include "config/typed_access.h"

#include <gmock/gmock.h>

#include <iomanip>
#include <sstream>
#include <stdexcept>

#include "support/log_capture.h"

namespace zant::test {
namespace {

using testing::ElementsAre;

// What a getter gives for the document's first key, or the text that it throws.
template <class Get>
std::string outcome(const std::string& config, Get get) {
    kor::ConfigDocument document;
    EXPECT_TRUE(kor::loadConfigString(document, config));
    const kor::FlatKeyList keys = kor::collectKeys(document);
    std::ostringstream text;
    try {
        text << std::setprecision(17) << get(keys[0]);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return text.str();
}

struct Getters {
    const char* value;
    const char* asBool;  // null where the getter refuses
    const char* asDouble;
    const char* asString;
    const char* asUint32;
    const char* asUint64;
    uint32_t type;
};

constexpr const char* MAX32 = "4294967295";
constexpr const char* MAX64 = "18446744073709551615";

const Getters GETTERS[] = {
    {"null", nullptr, nullptr, nullptr, nullptr, nullptr, 1},
    {"false", "0", nullptr, nullptr, nullptr, nullptr, 2},
    {"true", "1", nullptr, nullptr, nullptr, nullptr, 3},
    {"{}", nullptr, nullptr, nullptr, nullptr, nullptr, 4},
    {"[1]", nullptr, nullptr, nullptr, nullptr, nullptr, 5},
    {"\"7\"", nullptr, nullptr, "7", nullptr, nullptr, 6},
    {"\"a\\u0000b\"", nullptr, nullptr, "a", nullptr, nullptr, 6},
    {"1", nullptr, "1", nullptr, "1", "1", 7},
    {"-1", nullptr, "-1", nullptr, nullptr, nullptr, 7},
    {"4294967295", nullptr, "4294967295", nullptr, MAX32, MAX32, 8},
    {"4294967296", nullptr, "4294967296", nullptr, nullptr, "4294967296", 9},
    {"-2147483649", nullptr, "-2147483649", nullptr, nullptr, nullptr, 9},
    {"18446744073709551615", nullptr, "1.8446744073709552e+19", nullptr, nullptr, MAX64, 10},
    {"18446744073709551616", nullptr, "1.8446744073709552e+19", nullptr, MAX32, MAX64, 11},
    {"7.0", nullptr, "7", nullptr, "7", "7", 11},
    {"7.5", nullptr, "7.5", nullptr, nullptr, nullptr, 11},
    {"-7.0", nullptr, "-7", nullptr, nullptr, nullptr, 11},
    {"-0.0", nullptr, "-0", nullptr, "0", "0", 11},
    {"4294967294.0", nullptr, "4294967294", nullptr, "4294967294", "4294967294", 11},
    {"1e10", nullptr, "10000000000", nullptr, MAX32, "10000000000", 11},
    {"1e300", nullptr, "1.0000000000000001e+300", nullptr, MAX32, MAX64, 11},
};

TEST(TypedAccess, GettersTakeTheirKindsAndRefuseTheRest) {
    for (const Getters& row : GETTERS) {
        SCOPED_TRACE(row.value);
        // The key's text reaches the second member: a value of any kind, which has no leaf of its own.
        const std::string config = std::string(R"({"a/b":0,"a":{"b":)") + row.value + "}}";
        const auto expected = [](const char* value, const std::string& ending) {
            return value != nullptr ? value : "Value of key (a/b) is not " + ending;
        };
        EXPECT_EQ(outcome(config, kor::getBool), expected(row.asBool, "a bool"));
        EXPECT_EQ(outcome(config, kor::getDouble), expected(row.asDouble, "numeric"));
        EXPECT_EQ(outcome(config, kor::getString), expected(row.asString, "a string"));
        EXPECT_EQ(outcome(config, kor::getUint32), expected(row.asUint32, "convertible to uint32_t"));
        EXPECT_EQ(outcome(config, kor::getUint64), expected(row.asUint64, "convertible to uint64_t"));
        const auto type = [](const kor::FlatKey& key) { return static_cast<uint32_t>(kor::getValueType(key)); };
        EXPECT_EQ(outcome(config, type), std::to_string(row.type));
    }
}

TEST(TypedAccess, AKeyThatReachesNothing) {
    LogCapture log;
    const auto type = [](const kor::FlatKey& key) { return static_cast<uint32_t>(kor::getValueType(key)); };
    EXPECT_EQ(outcome(R"({"a/b":1})", kor::getUint32), "Invalid key: a/b");
    EXPECT_EQ(outcome(R"({"~":1})", kor::getString), "Invalid key: ~");
    EXPECT_EQ(outcome(R"({"a/b":1})", type), "0");
    EXPECT_EQ(outcome(R"({"":1})", kor::getBool), "Invalid key: ");
    EXPECT_THAT(log.texts(), ElementsAre("1 Invalid key: a/b", "1 Empty key provided."));
}

TEST(TypedAccess, FindsByTextWithAndWithoutALeadingSlash) {
    kor::ConfigDocument document;
    ASSERT_TRUE(kor::loadConfigString(document, R"({"a":[{"b":1}]})"));
    const kor::JsonValue* value = &document.root()["a"][0]["b"];
    LogCapture log;
    EXPECT_EQ(kor::findValue(document, "a/0/b"), value);
    EXPECT_EQ(kor::findValue(document, "/a/0/b"), value);
    for (const char* missing : {"a/1/b", "a/00/b", "//a/0/b", "a/0/b/", "~", "/"}) {
        EXPECT_EQ(kor::findValue(document, missing), nullptr) << missing;
    }
    EXPECT_EQ(kor::findValue(document, ""), nullptr);
    EXPECT_THAT(log.texts(), ElementsAre("1 Empty key provided."));
}

}  // namespace
}  // namespace zant::test
