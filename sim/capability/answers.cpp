#include "answers.h"

#include <rapidjson/document.h>
#include <rapidjson/istreamwrapper.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>

#include "soc_service.h"

namespace zant_sim {

namespace {

using rapidjson::Value;

constexpr size_t NAME_SIZE = 32;

rapidjson::Document readFile() {
    rapidjson::Document document;
    const char* path = std::getenv("ZELMAR_SIM_CAPABILITIES");
    if (path == nullptr) return document;
    std::ifstream file(path);
    rapidjson::IStreamWrapper stream(file);
    if (document.ParseStream(stream).HasParseError()) document.SetNull();
    return document;
}

const Value* memberOf(const Value* object, const std::string& name) {
    if (object == nullptr || !object->IsObject()) return nullptr;
    const auto member = object->FindMember(name.c_str());
    return member == object->MemberEnd() ? nullptr : &member->value;
}

const char* nameOf(uint32_t category) {
    return category == 2 ? "dsp" : category == 3 ? "gpu" : category == 5 ? "cpu" : "";
}

template <class T>
void append(std::vector<uint8_t>& bytes, T value) {
    uint8_t raw[sizeof(value)];
    std::memcpy(raw, &value, sizeof(value));
    bytes.insert(bytes.end(), raw, raw + sizeof(value));
}

void appendWord(std::vector<uint8_t>& bytes, const Value& value) {
    append(bytes, value.IsUint() ? value.GetUint() : 0U);
}

void appendName(std::vector<uint8_t>& bytes, const Value& text) {
    std::string name = text.GetString();
    name.resize(NAME_SIZE);
    bytes.insert(bytes.end(), name.begin(), name.end());
}

void appendRecord(std::vector<uint8_t>& bytes, uint32_t index, const Value& record) {
    append(bytes, index);
    if (record.IsString()) {
        appendName(bytes, record);
    } else if (record.IsArray() && record.Size() == 3 && record[1].IsString()) {
        appendWord(bytes, record[0]);
        appendWord(bytes, record[2]);
        appendName(bytes, record[1]);
    } else if (record.IsArray()) {
        for (const Value& word : record.GetArray()) appendWord(bytes, word);
    } else {
        appendWord(bytes, record);
    }
}

std::vector<uint8_t> recordsOf(const Value& records, uint32_t index) {
    std::vector<uint8_t> bytes;
    for (const Value& record : records.GetArray()) appendRecord(bytes, index, record);
    return bytes;
}

Answer hostileAnswer(const Value& value) {
    Answer answer;
    const Value* status = memberOf(&value, "status");
    const Value* size = memberOf(&value, "size");
    const Value* bytes = memberOf(&value, "bytes");
    const Value* records = memberOf(&value, "records");
    const Value* index = memberOf(&value, "index");
    if (status != nullptr && status->IsUint()) answer.status = status->GetUint();
    if (size != nullptr && size->IsUint64()) answer.claimedSize = size->GetUint64();
    if (records != nullptr && records->IsArray()) {
        answer.bytes = recordsOf(*records, index != nullptr && index->IsUint() ? index->GetUint() : 0U);
    }
    if (bytes != nullptr && bytes->IsArray()) {
        for (const Value& byte : bytes->GetArray()) {
            answer.bytes.push_back(static_cast<uint8_t>(byte.IsUint() ? byte.GetUint() : 0U));
        }
    }
    answer.isThrown = memberOf(&value, "throw") != nullptr;
    return answer;
}

std::optional<Answer> answerOf(const Value& value, bool isSerialized) {
    if (value.IsObject()) return hostileAnswer(value);
    if (value.IsArray() != isSerialized) return std::nullopt;
    Answer answer;
    if (value.IsArray()) {
        answer.bytes = recordsOf(value, 0);
    } else if (value.IsString()) {
        answer.bytes.assign(value.GetString(), value.GetString() + value.GetStringLength() + 1);
    } else if (value.IsUint64()) {
        append(answer.bytes, value.GetUint64());
    } else if (value.IsDouble()) {
        append(answer.bytes, static_cast<float>(value.GetDouble()));
    } else {
        return std::nullopt;
    }
    return answer;
}

}  // namespace

Version readVersion() {
    const rapidjson::Document document = readFile();
    const Value* version = memberOf(&document, "version");
    if (version == nullptr) return {ZANT_SIM_NOT_SUPPORTED, 0, 0};
    if (version->IsUint()) return {version->GetUint(), 0, 0};
    const bool isPair = version->IsArray() && version->Size() == 2 && (*version)[0].IsUint() && (*version)[1].IsUint();
    if (!isPair) return {ZANT_SIM_NOT_SUPPORTED, 0, 0};
    return {0, static_cast<uint8_t>((*version)[0].GetUint()), static_cast<uint8_t>((*version)[1].GetUint())};
}

std::optional<Answer> readAnswer(uint32_t category, uint32_t capability, bool isSerialized) {
    const rapidjson::Document document = readFile();
    const Value* value = memberOf(memberOf(&document, nameOf(category)), std::to_string(capability));
    return value == nullptr ? std::nullopt : answerOf(*value, isSerialized);
}

uint32_t giveAnswer(uint32_t category, uint32_t capability, bool isSerialized, void* buffer, uint64_t* size) {
    const std::optional<Answer> answer = readAnswer(category, capability, isSerialized);
    if (!answer) return ZANT_SIM_NOT_SUPPORTED;
    if (answer->isThrown) throw std::logic_error("a capability library's own fault");
    const uint64_t offered = *size;
    *size = answer->claimedSize.value_or(answer->bytes.size());
    const size_t written = std::min<size_t>(answer->bytes.size(), offered);
    if (written > 0) std::memcpy(buffer, answer->bytes.data(), written);
    return answer->status == 0 && !answer->claimedSize && *size > offered ? ZANT_SIM_TRY_SIZE : answer->status;
}

}  // namespace zant_sim
