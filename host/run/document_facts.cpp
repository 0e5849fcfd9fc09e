#include "run/document_facts.h"

#include <rapidjson/document.h>

#include <algorithm>
#include <functional>
#include <string_view>

namespace runhost {

namespace {

using Value = rapidjson::Value;

const Value* member(const Value& object, const char* name) {
    if (!object.IsObject()) return nullptr;
    const auto found = object.FindMember(name);
    return found == object.MemberEnd() ? nullptr : &found->value;
}

const Value* arrayMember(const Value& object, const char* name) {
    const Value* value = member(object, name);
    return value != nullptr && value->IsArray() ? value : nullptr;
}

// The names that a backend takes: letters, digits and '_', and no digit first.
std::string graphName(std::string text) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    const auto isAllowed = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); };
    std::replace_if(text.begin(), text.end(), std::not_fn(isAllowed), '_');
    return text.empty() || !isLetter(text.front()) ? "_" + text : text;
}

void addGraphNames(const Value& item, std::vector<std::string>& names) {
    const Value* list = arrayMember(item, "graph_names");
    if (list == nullptr) return;
    for (const Value& element : list->GetArray()) {
        if (!element.IsString()) continue;
        std::string name = graphName(element.GetString());
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(std::move(name));
    }
}

void addContextKey(const Value& item, std::vector<std::string>& keys) {
    const Value* key = member(item, "contextKey");
    if (key == nullptr || !key->IsString() || key->GetStringLength() == 0) return;
    if (std::find(keys.begin(), keys.end(), key->GetString()) == keys.end()) keys.emplace_back(key->GetString());
}

bool asksForSharedMemory(const Value& document) {
    const Value* memory = member(document, "memory");
    const Value* type = memory == nullptr ? nullptr : member(*memory, "mem_type");
    return type != nullptr && type->IsString() && type->GetString() == std::string_view("shared_buffer");
}

}  // namespace

DocumentFacts documentFacts(const std::string& text) {
    DocumentFacts facts;
    rapidjson::Document document;
    // Iterative and with numbers left as text: no nesting and no number can harm the host.
    document.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag>(text.c_str());
    if (!document.HasParseError()) {
        if (const Value* graphs = arrayMember(document, "graphs")) {
            for (const Value& item : graphs->GetArray()) addGraphNames(item, facts.graphNames);
        }
        if (const Value* devices = arrayMember(document, "devices")) {
            for (const Value& item : devices->GetArray()) {
                const Value* enable = member(item, "enable_kor_extension");
                if (enable != nullptr && enable->IsTrue()) facts.asksForExtension = true;
            }
        }
        if (const Value* contexts = arrayMember(document, "context")) {
            for (const Value& item : contexts->GetArray()) addContextKey(item, facts.contextKeys);
        }
        facts.asksForSharedMemory = asksForSharedMemory(document);
    }
    if (facts.graphNames.empty()) facts.graphNames.emplace_back("model");
    return facts;
}

}  // namespace runhost
