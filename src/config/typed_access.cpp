#include "config/typed_access.h"

#include <cmath>
#include <limits>
#include <stdexcept>

#include "platform/logger.h"

namespace zant::kor {

namespace {

const JsonValue& requireValue(const FlatKey& key) {
    const JsonValue* value = findValue(key);
    if (value == nullptr) throw std::runtime_error("Invalid key: " + key.text());
    return *value;
}

[[noreturn]] void refuse(const FlatKey& key, const char* ending) {
    throw std::runtime_error("Value of key (" + key.text() + ending);
}

template <class Number>
Number saturate(double value) {
    // The largest number of the width may round up to a double that is out of its range: hence >=.
    if (value >= static_cast<double>(std::numeric_limits<Number>::max())) return std::numeric_limits<Number>::max();
    return static_cast<Number>(value);
}

bool isWholeAndNotNegative(const JsonValue& value) {
    return value.IsDouble() && value.GetDouble() == std::trunc(value.GetDouble()) && value.GetDouble() >= 0;
}

}  // namespace

const JsonValue* findValue(const ConfigDocument& document, std::string_view key) {
    if (key.empty()) {
        ZANT_LOG_ERROR("Empty key provided.");
        return nullptr;
    }
    std::string text(key.front() == '/' ? "" : "/");
    text += key;
    ThrowingAllocator allocator;  // one of its own the pointer would lose when memory is short
    const JsonPointer pointer(text.data(), text.size(), &allocator);
    return pointer.IsValid() ? pointer.Get(document.root()) : nullptr;
}

const JsonValue* findValue(const FlatKey& key) {
    if (key.isEmpty()) ZANT_LOG_ERROR("Empty key provided.");
    return key.value();
}

bool getBool(const FlatKey& key) {
    const JsonValue& value = requireValue(key);
    if (!value.IsBool()) refuse(key, ") is not a bool");
    return value.GetBool();
}

double getDouble(const FlatKey& key) {
    const JsonValue& value = requireValue(key);
    if (!value.IsNumber()) refuse(key, ") is not numeric");
    return value.GetDouble();
}

float getFloat(const FlatKey& key) {
    constexpr float greatest = std::numeric_limits<float>::max();
    constexpr double firstThatRoundsToInfinity = 0x1.ffffffp127;
    const double value = getDouble(key);
    const double magnitude = std::fabs(value);
    if (magnitude <= static_cast<double>(greatest)) return static_cast<float>(value);
    const float bound = magnitude < firstThatRoundsToInfinity ? greatest : std::numeric_limits<float>::infinity();
    return std::signbit(value) ? -bound : bound;
}

std::string getString(const FlatKey& key) {
    const JsonValue& value = requireValue(key);
    if (!value.IsString()) refuse(key, ") is not a string");
    return value.GetString();
}

uint32_t getUint32(const FlatKey& key) {
    const JsonValue& value = requireValue(key);
    if (value.IsUint()) return value.GetUint();
    if (!isWholeAndNotNegative(value)) refuse(key, ") is not convertible to uint32_t");
    return saturate<uint32_t>(value.GetDouble());
}

uint64_t getUint64(const FlatKey& key) {
    const JsonValue& value = requireValue(key);
    if (value.IsUint64()) return value.GetUint64();
    if (!isWholeAndNotNegative(value)) refuse(key, ") is not convertible to uint64_t");
    return saturate<uint64_t>(value.GetDouble());
}

KORValueType getValueType(const FlatKey& key) {
    const JsonValue* value = findValue(key);
    if (value == nullptr) {
        ZANT_LOG_ERROR("Invalid key: %s", key.text().c_str());
        return KORValueType::missing;
    }
    switch (value->GetType()) {
        case rapidjson::kNullType:
            return KORValueType::null;
        case rapidjson::kFalseType:
            return KORValueType::falseValue;
        case rapidjson::kTrueType:
            return KORValueType::trueValue;
        case rapidjson::kObjectType:
            return KORValueType::object;
        case rapidjson::kArrayType:
            return KORValueType::array;
        case rapidjson::kStringType:
            return KORValueType::string;
        case rapidjson::kNumberType:
            break;
    }
    if (value->IsInt()) return KORValueType::int32;
    if (value->IsUint()) return KORValueType::uint32;
    if (value->IsInt64()) return KORValueType::int64;
    if (value->IsUint64()) return KORValueType::uint64;
    return KORValueType::float64;
}

}  // namespace zant::kor
