#include "life/plain_keys.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

#include "config/config_document.h"
#include "config/flat_keys.h"

namespace zant::test {
namespace {

using kor::FlatKey;
using kor::JsonPointer;
using kor::JsonValue;

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

std::string describeGroup(const kor::PreloadGroup& group) {
    return group.isComplete() ? describe(group.group()) : "incomplete";
}

std::string expectedGroup(const std::string& text) {
    const std::string word = "lora_preload_buffer_group/";
    const size_t begin = text.find(word);
    const size_t end = begin == std::string::npos ? begin : text.find('/', begin + word.size());
    if (end == std::string::npos) return "incomplete";
    const std::string group = text.substr(begin + word.size(), end - begin - word.size());
    if (group.empty() || group.find_first_not_of("0123456789") != std::string::npos) return "text";
    return expectedAfter("x/" + group, "x", false);
}

std::string keyDifference(const FlatKey& key, const std::string& text, const JsonValue& root) {
    using enum kor::KeyElement;
    if (key.text() != text) return "text " + key.text();
    if (key.value() != expectedValue(text, root)) return "value";
    for (size_t i = 0; i < kor::KEY_WORDS.size(); ++i) {
        const auto word = static_cast<kor::KeyWord>(i);
        const std::string name(kor::KEY_WORDS[i]);
        if (key.holds(word) != (text.find(name) != std::string::npos)) return "holds " + name;
        if (key.equals(word) != (text == name)) return "equals " + name;
    }
    const std::pair<kor::KeyElement, const char*> elements[] = {
        {devices, "devices"}, {graphs, "graphs"}, {context, "context"}, {custom, "custom"}};
    for (const auto& [element, word] : elements) {
        if (describe(key.after(element)) != expectedAfter(text, word, false)) return std::string("after ") + word;
        if (describe(key.afterOrSecond(element)) != expectedAfter(text, word, true)) {
            return std::string("after or second ") + word;
        }
    }
    return describeGroup(key.preloadGroup()) == expectedGroup(text) ? "" : "preload group";
}

}  // namespace

std::string keyDifference(const std::string& config) {
    kor::ConfigDocument document;
    if (!kor::loadConfigString(document, config)) return "";
    std::vector<std::string> texts;
    if (document.root().IsObject()) collectTexts(document.root(), "", texts);
    const kor::FlatKeyList keys = kor::collectKeys(document);
    if (keys.size() != texts.size()) return "number of keys";
    std::array<std::vector<uint32_t>, 5> sections;
    for (uint32_t i = 0; i < texts.size(); ++i) {
        const std::string difference = keyDifference(keys[i], texts[i], document.root());
        if (!difference.empty()) return texts[i] + ": " + difference;
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
        if (keys.positionsOf(static_cast<kor::KeySection>(i)) != sections[i]) return "section " + std::to_string(i);
    }
    return "";
}

}  // namespace zant::test
