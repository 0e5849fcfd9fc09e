// The walk that finds texts, words, elements and values at once, against the plain reading of each key's text.
#include "config/flat_keys.h"

#include <gmock/gmock.h>

#include <random>
#include <stdexcept>

#include "support/loaded_config.h"

namespace zant::test {
namespace {

using kor::FlatKey;
using kor::JsonPointer;
using kor::JsonValue;
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
        "memory", "groupContext", "device", "s", "devices/1", "custom/1/", "graphs0", "O", "~1devices"};
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

void collectTexts(const JsonValue& value, const std::string& text, std::vector<std::string>& texts) {
    if (value.IsObject()) {
        for (const auto& member : value.GetObject()) {
            collectTexts(member.value, text + "/" + std::string(kor::textOf(member.name)), texts);
        }
    } else if (value.IsArray()) {
        for (rapidjson::SizeType i = 0; i < value.Size(); ++i) {
            collectTexts(value[i], text + "/" + std::to_string(i), texts);
        }
    } else if (!value.IsNull()) {
        texts.push_back(text.substr(1));
    }
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> elements(1);
    for (const char c : text) {
        if (c != '/') {
            elements.back().push_back(c);
        } else if (!elements.back().empty()) {
            elements.emplace_back();
        }
    }
    if (elements.back().empty()) elements.pop_back();
    return elements;
}

// What follows the first element equal to the word, or what follows the first one of all.
std::string expectedAfter(const std::string& text, const std::string& word, bool orSecond) {
    const std::vector<std::string> elements = split(text);
    auto found = std::find(elements.begin(), elements.end(), word);
    if (found == elements.end() && orSecond) found = elements.begin();
    if (found == elements.end() || found + 1 == elements.end()) return "none";
    const std::string& element = *(found + 1);
    if (element.find_first_not_of("0123456789") != std::string::npos) return "text";
    return element.size() > 10 || std::stoll(element) > INT32_MAX ? "too large" : std::to_string(std::stoi(element));
}

std::string describe(kor::IndexElement element) {
    if (element.isNone()) return "none";
    if (!element.isDigits()) return "text";
    try {
        return std::to_string(element.toIndex());
    } catch (const std::out_of_range&) {
        return "too large";
    }
}

const JsonValue* expectedValue(const std::string& text, const JsonValue& root) {
    if (text.empty()) return nullptr;
    const std::string path = text.front() == '/' ? text : "/" + text;
    const JsonPointer pointer(path.data(), path.size());
    return pointer.IsValid() ? pointer.Get(root) : nullptr;
}

void compareKey(const FlatKey& key, const std::string& text, const JsonValue& root) {
    using enum kor::KeyElement;
    ASSERT_EQ(key.text(), text);
    EXPECT_EQ(key.value(), expectedValue(text, root)) << text;
    for (size_t i = 0; i < kor::KEY_WORDS.size(); ++i) {
        const auto word = static_cast<kor::KeyWord>(i);
        ASSERT_EQ(key.holds(word), text.find(kor::KEY_WORDS[i]) != std::string::npos)
            << text << " " << kor::KEY_WORDS[i];
        ASSERT_EQ(key.equals(word), text == kor::KEY_WORDS[i]) << text;
    }
    const std::pair<kor::KeyElement, const char*> elements[] = {
        {devices, "devices"}, {graphs, "graphs"}, {context, "context"}, {custom, "custom"}};
    for (const auto& [element, word] : elements) {
        EXPECT_EQ(describe(key.after(element)), expectedAfter(text, word, false)) << text << " after " << word;
        EXPECT_EQ(describe(key.afterOrSecond(element)), expectedAfter(text, word, true)) << text << " after " << word;
    }
}

void compareDocument(const std::string& config) {
    kor::ConfigDocument document;
    ASSERT_TRUE(kor::loadConfigString(document, config));
    std::vector<std::string> texts;
    collectTexts(document.root(), "", texts);
    const kor::FlatKeyList keys = kor::collectKeys(document);
    ASSERT_EQ(keys.size(), texts.size());
    std::array<std::vector<uint32_t>, 5> sections;
    for (uint32_t i = 0; i < texts.size(); ++i) {
        compareKey(keys[i], texts[i], document.root());
        for (size_t section = 0; section < 3; ++section) {
            const char* const words[] = {"devices", "graphs", "context"};
            if (texts[i].find(words[section]) != std::string::npos) sections[section].push_back(i);
        }
        if (texts[i] == "groupContext/share_resources" || texts[i] == "groupContext/reused_io_limit_mb" ||
            texts[i] == "groupContext/share_resources_optimization_type") {
            sections[3].push_back(i);
        }
        if (texts[i] == "memory/mem_type") sections[4].push_back(i);
    }
    for (size_t i = 0; i < sections.size(); ++i) {
        EXPECT_EQ(keys.positionsOf(static_cast<kor::KeySection>(i)), sections[i]) << i;
    }
}

TEST(FlatKeys, NamedCasesReadLikeTheirTexts) {
    const std::string documents[] = {
        R"({"devices":[{"cores":[{"perf_profile":"burst"}],"core_id":[0,1]}]})",
        R"({"a/b":1,"a":{"b":2}})",
        R"({"a~1b":1,"a/b":2,"a~b":3,"a~0b":4})",
        R"({"x":1,"x":2,"x":{"y":3},"x":{"y":4}})",
        R"({"":1,"a":{"":2,"":{"":3}}})",
        R"({"":{"devices":{"0":1}},"devices":[{"x":1}]})",
        R"({"/devices/0/x":1,"devices":[{"x":1}]})",
        R"({"devices":{"00":1,"0":2},"devices":[3]})",
        R"({"a":[5,{"b":1}],"a/00":1,"a/1/b":2,"a/01/b":3,"a/2":4,"a/-0":5,"a/":6})",
        R"({"cus":1,"custom/":{"dcvsControl":{"start":1}},"custo":{"m":1}})",
        R"({"groupContext":{"share_resources":true,"share_resources_optimization_type":1},"memory/mem_type":1,)"
        R"("memory":{"mem_type":"x"}})",
    };
    for (const std::string& document : documents) compareDocument(document);
}

TEST(FlatKeys, GeneratedDocumentsReadLikeTheirTexts) {
    Random random(20240607);
    for (int i = 0; i < 1500 && !HasFailure(); ++i) {
        std::string members;
        for (size_t count = 1 + pick(random, 5); count > 0; --count) {
            members += "\"" + someName(random) + "\":" + someValue(random, 5) + (count > 1 ? "," : "");
        }
        SCOPED_TRACE(members);
        compareDocument("{" + members + "}");
    }
}

TEST(FlatKeys, ManyMembersOfOneObjectReadLikeTheirTexts) {
    std::string members;
    for (int i = 0; i < 60; ++i) members += "\"a" + std::to_string(i % 50) + "\":" + std::to_string(i) + ",";
    compareDocument("{\"o\":{" + members + "\"a/b\":1,\"a\":{\"b\":2}},\"o\":3,\"o/a7\":4}");
}

TEST(FlatKeys, WideDocumentsLoad) {
    std::string distinct, duplicate, unresolved;
    for (int i = 0; i < 200000; ++i) distinct += "\"a" + std::to_string(i) + "\":0,";
    for (int i = 0; i < 100000; ++i) {
        duplicate += "\"soc_id\":" + std::to_string(i + 1) + ",";
        unresolved += "\"x/y\":0,";
    }
    EXPECT_EQ(loadDocument("{\"devices\":[{" + distinct + "\"soc_id\":7}]}").devices.at(0).socModel, 7U);
    // A pointer reaches the first of duplicate names.
    EXPECT_EQ(loadDocument("{\"devices\":[{" + duplicate + "\"soc_id\":7}]}").devices.at(0).socModel, 1U);
    EXPECT_EQ(loadDocument("{\"devices\":[{" + unresolved + "\"soc_id\":7}]}").devices.at(0).socModel, 7U);
}

}  // namespace
}  // namespace zant::test
