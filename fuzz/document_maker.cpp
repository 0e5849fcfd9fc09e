#include "document_maker.h"

#include <rapidjson/document.h>

#include <cstdlib>

#include "config/key_words.h"
#include "zelmar_kor/value_names.h"

namespace fuzz {
namespace {

using rapidjson::Value;

constexpr const char SCHEMA_TEXT[] =
#include "config_schema.inc"
    ;

// clang-format off
constexpr const char* NUMBERS[] = {
    "0", "1", "2", "7", "-1", "255", "256", "2147483647", "-2147483648", "2147483648", "4294967295", "4294967296",
    "1.5", "-0.0", "1e300", "1e-300", "0.1", "9223372036854775807", "-9223372036854775808", "18446744073709551615",
    "18446744073709551616"};
constexpr const char* TEXTS[] = {
    "", "v68", "v73", "v81", "signed", "unsigned", "auto", "init_start", "init_done", "inference_start",
    "inference_done", "deinit_start", "deinit_done", "linting", "detailed", "optrace", "shared_buffer", "encoder",
    "decoder", "\\u0000", "\\u00e9", "a text that fits into no short string of any library", "%s%n"};
// clang-format on
constexpr const char* ODD_NAMES[] = {"", "/", "~", "~1", "a/b", "0", "99999999999", "devices", "custom"};

const rapidjson::Document& schema() {
    static const rapidjson::Document document = [] {
        rapidjson::Document parsed;
        if (parsed.Parse(SCHEMA_TEXT).HasParseError()) std::abort();
        return parsed;
    }();
    return document;
}

const Value& resolve(const Value& node) {
    const auto reference = node.FindMember("$ref");
    if (reference == node.MemberEnd()) return node;
    const std::string path = reference->value.GetString();
    return schema()["definitions"][path.substr(path.rfind('/') + 1).c_str()];
}

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

std::string makeText(ByteSource& source) {
    switch (source.below(6)) {
        case 0:
            return quoted(source.pick(ZANT_PERF_PROFILE_NAMES).name);
        case 1:
            return quoted(source.pick(ZANT_CORNER_NAMES).name);
        case 2:
            return quoted(source.pick(ZANT_EXP_CORNER_NAMES).name);
        case 3:
            return quoted(source.pick(ZANT_POWER_MODE_NAMES).name);
        default:
            return quoted(source.pick(TEXTS));
    }
}

std::string makeName(ByteSource& source) {
    if (source.below(2) == 0) return source.pick(ODD_NAMES);
    std::string name(source.pick(zant::kor::KEY_WORDS));
    if (source.below(2) == 0) name.resize(source.below(name.size() + 1));
    return name;
}

bool isRequired(const Value& node, const char* name) {
    const auto required = node.FindMember("required");
    if (required == node.MemberEnd()) return false;
    for (const Value& each : required->value.GetArray()) {
        if (name == std::string(each.GetString())) return true;
    }
    return false;
}

std::string makeBySchema(ByteSource& source, const Value& unresolved, int depth);

std::string makeObject(ByteSource& source, const Value& node, int depth) {
    std::string members;
    const auto add = [&](const std::string& name, const std::string& value) {
        members += (members.empty() ? "" : ",") + quoted(name) + ":" + value;
    };
    const auto properties = node.FindMember("properties");
    if (properties != node.MemberEnd()) {
        for (const auto& property : properties->value.GetObject()) {
            const char* name = property.name.GetString();
            const size_t choice = source.below(8);
            const bool isWanted = isRequired(node, name) ? choice != 7 : choice >= 5;
            if (isWanted) add(name, makeBySchema(source, property.value, depth - 1));
        }
    } else {
        add("x", makeValue(source, depth - 1));
    }
    if (source.byte() > 240) add(makeName(source), makeValue(source, depth - 1));
    return "{" + members + "}";
}

std::string makeArray(ByteSource& source, const Value& node, int depth) {
    std::string items;
    const auto item = node.FindMember("items");
    for (size_t count = source.below(4); count > 0; --count) {
        if (!items.empty()) items += ",";
        items += item == node.MemberEnd() ? makeValue(source, depth - 1) : makeBySchema(source, item->value, depth - 1);
    }
    return "[" + items + "]";
}

std::string makeBySchema(ByteSource& source, const Value& unresolved, int depth) {
    if (depth <= 0 || source.byte() > 250) return makeValue(source, depth);
    const Value& node = resolve(unresolved);
    for (const char* choice : {"anyOf", "oneOf"}) {
        const auto options = node.FindMember(choice);
        if (options != node.MemberEnd()) {
            const auto count = static_cast<size_t>(options->value.Size());
            return makeBySchema(source, options->value[static_cast<rapidjson::SizeType>(source.below(count))],
                                depth - 1);
        }
    }
    const auto typeMember = node.FindMember("type");
    if (typeMember == node.MemberEnd() || !typeMember->value.IsString()) return makeValue(source, depth);
    const std::string type = typeMember->value.GetString();
    if (type == "object") return makeObject(source, node, depth);
    if (type == "array") return makeArray(source, node, depth);
    if (type == "string") return makeText(source);
    if (type == "boolean") return source.below(2) == 0 ? "true" : "false";
    return source.pick(NUMBERS);
}

}  // namespace

std::string makeValue(ByteSource& source, int depth) {
    switch (source.below(depth > 0 ? 8 : 5)) {
        case 0:
            return source.pick(NUMBERS);
        case 1:
            return makeText(source);
        case 2:
            return "true";
        case 3:
            return "false";
        case 4:
            return "null";
        case 5: {
            std::string items;
            for (size_t count = source.below(4); count > 0; --count) {
                items += makeValue(source, depth - 1) + (count > 1 ? "," : "");
            }
            return "[" + items + "]";
        }
        default: {
            std::string members;
            for (size_t count = source.below(4); count > 0; --count) {
                members += quoted(makeName(source)) + ":" + makeValue(source, depth - 1) + (count > 1 ? "," : "");
            }
            return "{" + members + "}";
        }
    }
}

std::string makeDocument(ByteSource& source) {
    return makeBySchema(source, schema(), 16);
}

}  // namespace fuzz
