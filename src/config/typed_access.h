// Typed getters over flat keys. They throw std::runtime_error with a fixed text, which each section turns into one
// log line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "config/config_document.h"
#include "config/flat_keys.h"

namespace zant::kor {

enum class KORValueType : uint32_t {
    missing = 0,
    null = 1,
    falseValue = 2,
    trueValue = 3,
    object = 4,
    array = 5,
    string = 6,
    int32 = 7,     // an integer that fits a signed 32-bit number
    uint32 = 8,    // unsigned 32 bits and not the above
    int64 = 9,     // signed 64 bits and none of the above
    uint64 = 10,   // unsigned 64 bits only
    float64 = 11,  // written with a fraction or an exponent, or too large for any integer
};

// Reads the key as a JSON pointer, with a '/' put in front unless it has one. Null when it reaches nothing; an empty
// key logs "Empty key provided." at level 1 first. Logs nothing else and throws nothing but
// std::bad_alloc.
const JsonValue* findValue(const ConfigDocument& document, std::string_view key);
const JsonValue* findValue(const FlatKey& key);

bool getBool(const FlatKey& key);
// Any number; an integer is converted.
double getDouble(const FlatKey& key);
// The same, as the nearest float, ties to even; what lies beyond the last float is infinite.
float getFloat(const FlatKey& key);
// A copy, up to the value's first zero byte.
std::string getString(const FlatKey& key);
// An integer of the width, or a double without fraction that is not negative, saturated to the width.
uint32_t getUint32(const FlatKey& key);
uint64_t getUint64(const FlatKey& key);
// A key that reaches nothing logs "Invalid key: %s" at level 1 and is missing.
KORValueType getValueType(const FlatKey& key);

}  // namespace zant::kor
