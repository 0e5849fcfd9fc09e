// What a machine tells of itself, on Linux: firmware tables, services and registry. Linux has no services and no
// registry; a directory named by ZELMAR_PLATFORM_ROOT stands for another machine that has them:
//
//   firmware/FACP, firmware/PPTT   raw tables
//   platform.json                  {"services": {NAME: {"binaryPathName": TEXT}},
//                                   "registry": {"HKLM": {PATH: {VALUE: TEXT or [BYTES]}}, "HKCU": {...}}}
//
// A file that is missing or malformed is a missing value.
#include <rapidjson/memorystream.h>
#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "platform/json_types.h"
#include "platform/system.h"

namespace zant::system {

namespace {

using kor::JsonTree;
using kor::JsonValue;

constexpr size_t LARGEST_FILE = size_t{1} << 20;
constexpr unsigned PARSE_FLAGS = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
constexpr wchar_t REPLACEMENT = 0xFFFD;

// Null without one. A privileged process is not led astray by its environment.
const char* platformRoot() noexcept {
    const char* root = secure_getenv("ZELMAR_PLATFORM_ROOT");
    return root == nullptr || *root == '\0' ? nullptr : root;
}

// The tree of platform.json, null when there is none.
JsonTree readPlatform() {
    JsonTree tree;
    FileContents file;
    const char* root = platformRoot();
    if (root == nullptr) return tree;
    const std::string path = std::string(root) + "/platform.json";
    if (readWholeFile(path.c_str(), LARGEST_FILE, file) != ReadFileStatus::ok) return tree;
    if (tree.Parse<PARSE_FLAGS>(file.text.get(), file.size).HasParseError()) tree.SetNull();
    return tree;
}

const JsonValue* memberOf(const JsonValue* object, const char* name) {
    if (object == nullptr || !object->IsObject()) return nullptr;
    const auto member = object->FindMember(name);
    return member == object->MemberEnd() ? nullptr : &member->value;
}

// Names of keys and values are the same in any case.
const JsonValue* memberInAnyCase(const JsonValue* object, const char* name) {
    if (object == nullptr || !object->IsObject()) return nullptr;
    for (const auto& member : object->GetObject()) {
        if (strcasecmp(member.name.GetString(), name) == 0) return &member.value;
    }
    return nullptr;
}

std::wstring widen(const char* text) {
    std::wstring wide;
    const size_t length = std::strlen(text);
    rapidjson::MemoryStream stream(text, length);  // stays at the end, also within a character that is cut off
    while (stream.Tell() < length) {
        unsigned codepoint = 0;
        const bool isValid = rapidjson::UTF8<>::Decode(stream, &codepoint);
        wide.push_back(isValid ? static_cast<wchar_t>(codepoint) : REPLACEMENT);
    }
    return wide;
}

// Takes what rapidjson encodes.
struct StringOutput {
    using Ch = char;
    void Put(char unit) { text.push_back(unit); }
    std::string text;
};

// The bytes of a value as a registry keeps it: a text with its end.
std::optional<std::string> bytesOf(const JsonValue& value) {
    if (value.IsString()) return std::string(value.GetString(), value.GetStringLength() + 1);
    if (!value.IsArray()) return std::nullopt;
    std::string bytes;
    for (const JsonValue& byte : value.GetArray()) {
        if (!byte.IsUint() || byte.GetUint() > 0xFF) return std::nullopt;
        bytes.push_back(static_cast<char>(byte.GetUint()));
    }
    return bytes;
}

// A key stays open on the tree that it was found in.
struct OpenKey {
    JsonTree tree;
    const JsonValue* values;
};

uint32_t readValue(const OpenKey& key, const char* name, RegistryType type, void* buffer, uint32_t& size) {
    const JsonValue* value = memberInAnyCase(key.values, name);
    if (value == nullptr) return REGISTRY_NOT_FOUND;
    const std::optional<std::string> bytes = bytesOf(*value);
    if (!bytes) return REGISTRY_NOT_FOUND;
    if (type != RegistryType::any && value->IsString() != (type == RegistryType::text)) return REGISTRY_WRONG_TYPE;
    const size_t capacity = std::exchange(size, static_cast<uint32_t>(bytes->size()));
    if (buffer == nullptr) return REGISTRY_OK;
    if (bytes->size() > capacity) return REGISTRY_MORE_DATA;
    std::memcpy(buffer, bytes->data(), bytes->size());
    return REGISTRY_OK;
}

}  // namespace

size_t readFirmwareTable(const char* name, void* buffer, size_t capacity) noexcept {
    const char* root = platformRoot();
    FileContents table;
    try {
        const std::string folder = root != nullptr ? std::string(root) + "/firmware/" : "/sys/firmware/acpi/tables/";
        if (readWholeFile((folder + name).c_str(), LARGEST_FILE, table) != ReadFileStatus::ok) return 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
    if (buffer != nullptr && table.size <= capacity) std::memcpy(buffer, table.text.get(), table.size);
    return table.size;
}

std::optional<std::wstring> serviceBinaryPath(const wchar_t* service) {
    const JsonTree platform = readPlatform();
    const JsonValue* entry = memberInAnyCase(memberOf(&platform, "services"), narrow(service).c_str());
    const JsonValue* path = memberOf(entry, "binaryPathName");
    if (path == nullptr || !path->IsString()) return std::nullopt;
    return widen(path->GetString());
}

std::optional<std::wstring> environmentVariable(const wchar_t* name) {
    const char* value = secure_getenv(narrow(name).c_str());
    if (value == nullptr || *value == '\0') return std::nullopt;
    return widen(value);
}

std::string narrow(const std::wstring& text) {
    StringOutput output;
    for (const wchar_t unit : text) {
        const unsigned codepoint{static_cast<char32_t>(unit)};
        const bool isValid = codepoint <= 0x10FFFF && (codepoint < 0xD800 || codepoint > 0xDFFF);
        rapidjson::UTF8<>::Encode(output, isValid ? codepoint : static_cast<unsigned>(REPLACEMENT));
    }
    return std::move(output.text);
}

RegistryKey::~RegistryKey() {
    delete static_cast<OpenKey*>(m_handle);
}

uint32_t RegistryKey::open(RegistryRoot root, const char* path) noexcept {
    try {
        auto key = std::make_unique<OpenKey>(OpenKey{readPlatform(), nullptr});
        const char* rootName = root == RegistryRoot::localMachine ? "HKLM" : "HKCU";
        key->values = memberInAnyCase(memberOf(memberOf(&key->tree, "registry"), rootName), path);
        if (key->values == nullptr) return REGISTRY_NOT_FOUND;
        m_handle = key.release();
        return REGISTRY_OK;
    } catch (const std::bad_alloc&) {
        return REGISTRY_NO_MEMORY;
    }
}

uint32_t RegistryKey::read(const char* value, RegistryType type, void* buffer, uint32_t& size) const noexcept {
    if (m_handle == nullptr) return REGISTRY_NOT_FOUND;
    try {
        return readValue(*static_cast<const OpenKey*>(m_handle), value, type, buffer, size);
    } catch (const std::bad_alloc&) {
        return REGISTRY_NO_MEMORY;
    }
}

}  // namespace zant::system
