// The walk that finds texts, words, elements and values at once, against the plain reading of each key's text.
#include "config/flat_keys.h"

#include <gtest/gtest.h>

#include <random>

#include "life/plain_keys.h"

namespace zant::test {
namespace {

using Random = std::mt19937;

size_t pick(Random& random, size_t count) {
    return random() % count;
}

std::string someWord(Random& random) {
    return std::string(kor::KEY_WORDS[pick(random, kor::KEY_WORDS.size())]);
}

std::string someName(Random& random) {
    // clang-format off
    static const std::string names[] = {
        "", "/", "~", "~0", "~1", "~x", "~01", "a", "b", "a/b", "/a", "a/", "//", "a~1b", "x", "0", "1", "00", "01",
        "2147483647", "99999999999", "-1", "1x", "devices", "devices/", "graphs", "context", "/devices", "custom",
        "memory", "groupContext", "device", "s", "devices/1", "custom/1/", "graphs0", "O", "~1devices",
        "a\\u0000b"};
    // clang-format on
    const size_t kind = pick(random, 10);
    if (kind < 7) return names[pick(random, std::size(names))];
    if (kind == 7) return someWord(random);
    // A word in two pieces of which each stands in a name of its own, or next to another word.
    std::string name = someWord(random);
    const size_t cut = pick(random, name.size() + 1);
    name = pick(random, 2) == 0 ? name.substr(0, cut) : name.substr(cut);
    return pick(random, 4) == 0 ? name + someWord(random) : name;
}

std::string someValue(Random& random, int depth) {
    static const std::string leaves[] = {"true", "0", "-1.5", "\"devices\"", "null", "{}", "[]"};
    const size_t kind = depth == 0 ? 9 : pick(random, 10);
    if (kind >= 6) return leaves[pick(random, std::size(leaves))];
    const bool isObject = kind < 4;
    std::string text;
    for (size_t i = pick(random, 5); i > 0; --i) {
        if (isObject) text += "\"" + someName(random) + "\":";
        text += someValue(random, depth - 1) + (i > 1 ? "," : "");
    }
    return isObject ? "{" + text + "}" : "[" + text + "]";
}

TEST(FlatKeys, GeneratedDocumentsReadLikeTheirTexts) {
    Random random(20240607);
    for (int i = 0; i < 1500 && !HasFailure(); ++i) {
        std::string members;
        for (size_t count = 1 + pick(random, 5); count > 0; --count) {
            members += "\"" + someName(random) + "\":" + someValue(random, 5) + (count > 1 ? "," : "");
        }
        SCOPED_TRACE(members);
        EXPECT_EQ(keyDifference("{" + members + "}"), "");
    }
}

TEST(FlatKeys, NamedCasesReadLikeTheirTexts) {
    std::string many;  // more members of one object than are gone through one by one
    for (int i = 0; i < 60; ++i) many += "\"a" + std::to_string(i % 50) + "\":" + std::to_string(i) + ",";
    const std::string documents[] = {
        R"({"":{"devices":{"0":1}},"devices":[{"x":1}],"/devices/0/x":1})",
        R"({"a":[5,{"b":1}],"a/00":1,"a/1/b":2,"a/01/b":3,"a/2":4,"a/-0":5,"a/":6})",
        R"({"groupContext":{"share_resources":true,"share_resources_optimization_type":1},"memory/mem_type":1,)"
        R"("memory":{"mem_type":"x"}})",
        "{\"o\":{" + many + R"("a/b":1,"a":{"b":2}},"o":3,"o/a7":4})",
    };
    for (const std::string& document : documents) EXPECT_EQ(keyDifference(document), "") << document;
}

}  // namespace
}  // namespace zant::test
