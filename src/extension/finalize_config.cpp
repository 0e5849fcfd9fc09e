// finalize_config: members that only the backend knows, passed on by name, one record for each leaf.
#include <cstring>
#include <new>
#include <string>

#include "config/config_document.h"
#include "config/typed_access.h"
#include "extension/kor_backend.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

using Finalize = KORGraphCustomConfig::Finalize;

char* copyText(const std::string& text) {
    char* copy = new char[text.size() + 1];
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

template <uint8_t Value>
void storeFlag(const FlatKey&, Finalize::Value& value) {
    value.flag = Value;
}

void storeText(const FlatKey& key, Finalize::Value& value) {
    value.text = copyText(getString(key));
}

// One row for each kind of value that the backend takes.
struct ValueRow {
    KORValueType type;
    KORFinalizeDataType code;
    void (*store)(const FlatKey& key, Finalize::Value& value);
};

constexpr ValueRow VALUES[] = {
    {KORValueType::string, KOR_FINALIZE_DATA_TYPE_TEXT, storeText},
    {KORValueType::falseValue, KOR_FINALIZE_DATA_TYPE_BOOL, storeFlag<0>},
    {KORValueType::trueValue, KOR_FINALIZE_DATA_TYPE_BOOL, storeFlag<1>},
    {KORValueType::int32, KOR_FINALIZE_DATA_TYPE_INT32,
     [](const FlatKey& key, Finalize::Value& value) { value.int32 = key.value()->GetInt(); }},
    {KORValueType::uint32, KOR_FINALIZE_DATA_TYPE_UINT32,
     [](const FlatKey& key, Finalize::Value& value) { value.uint32 = key.value()->GetUint(); }},
    {KORValueType::int64, KOR_FINALIZE_DATA_TYPE_INT64,
     [](const FlatKey& key, Finalize::Value& value) { value.int64 = key.value()->GetInt64(); }},
    {KORValueType::uint64, KOR_FINALIZE_DATA_TYPE_UINT64,
     [](const FlatKey& key, Finalize::Value& value) { value.uint64 = key.value()->GetUint64(); }},
    {KORValueType::float64, KOR_FINALIZE_DATA_TYPE_FLOAT32,
     [](const FlatKey& key, Finalize::Value& value) { value.float32 = getFloat(key); }},
};

bool fillValue(const FlatKey& key, Finalize& finalize) {
    const KORValueType type = getValueType(key);
    for (const ValueRow& row : VALUES) {
        if (row.type != type) continue;
        row.store(key, finalize.value);
        finalize.dataType = row.code;  // only now does the record own a text
        return true;
    }
    ZANT_LOG_ERROR("Invalid value type: %d", static_cast<int>(type));
    return false;
}

}  // namespace

bool KORBackend::buildFinalizeConfigRecords(size_t graphIndex) {
    try {
        ConfigDocument document;
        if (!loadConfigString(document, m_graphConfigs[graphIndex].finalizeConfig)) {
            ZANT_LOG_ERROR("Finalize config parsing failed");
            return false;
        }
        bool result = true;
        for (const FlatKey& key : collectKeys(document)) {
            GraphRecord record = makeGraphRecord({});
            record->option = KOR_GRAPH_OPTION_FINALIZE;
            record->values.finalize.name = copyText(key.text());
            // A leaf without a value goes out all the same, under its name and with data type 0.
            result = fillValue(key, record->values.finalize) && result;
            result = addGraphRecord(std::move(record)) && result;
        }
        return result;
    } catch (const std::bad_alloc& error) {
        ZANT_LOG_ERROR("finalizeConfigCustomConfig alloc failed- %s", error.what());
        return false;
    }
}

}  // namespace zant::kor
