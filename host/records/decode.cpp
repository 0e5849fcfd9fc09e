#include "records/decode.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace runhost {

namespace {

enum class ValueForm { IN_ID, NUMBER, FLAG };

struct DeviceOptionRow {
    const char* name;
    uint32_t option;
    ValueForm form;
};

constexpr DeviceOptionRow DEVICE_OPTIONS[] = {
    {"SOC_MODEL", KOR_DEVICE_OPTION_SOC_MODEL, ValueForm::IN_ID},
    {"DSP_ARCH", KOR_DEVICE_OPTION_DSP_ARCH, ValueForm::NUMBER},
    {"SIGNED_PD_SESSION", KOR_DEVICE_OPTION_SIGNED_PD_SESSION, ValueForm::FLAG},
    {"ASYNC_EXECUTE", KOR_DEVICE_OPTION_ASYNC_EXECUTE, ValueForm::FLAG},
    {"USE_DYNAMIC_PARTITIONING", KOR_DEVICE_OPTION_USE_DYNAMIC_PARTITIONING, ValueForm::FLAG},
};

std::string deviceValue(const KORDeviceCustomConfig& record, ValueForm form) {
    switch (form) {
        case ValueForm::IN_ID:
            return fmt::format("{}", record.deviceIdOrSocModel);
        case ValueForm::NUMBER:
            return fmt::format("{} (device {})", record.value.number, record.deviceIdOrSocModel);
        case ValueForm::FLAG:
            return fmt::format("{} (device {})", record.value.flag != 0 ? "on" : "off", record.deviceIdOrSocModel);
    }
    return {};
}

}  // namespace

std::vector<uint8_t> bytesOf(const void* record, size_t size) {
    std::vector<uint8_t> bytes(size);
    std::memcpy(bytes.data(), record, size);
    return bytes;
}

DecodedRecord notCustom(const ZantConfigWrapper& wrapper) {
    return {wrapper.option, {}, "a wrapper without a custom record", bytesOf(&wrapper, sizeof(wrapper))};
}

bool holdsCustomRecord(const ZantConfigWrapper& wrapper) {
    return wrapper.option == ZANT_CONFIG_OPTION_CUSTOM && wrapper.customConfig != nullptr;
}

DecodedRecord decodeDeviceRecord(const ZantConfigWrapper& wrapper) {
    if (!holdsCustomRecord(wrapper)) return notCustom(wrapper);
    const auto& record = *static_cast<const KORDeviceCustomConfig*>(wrapper.customConfig);
    const auto* row = std::find_if(std::begin(DEVICE_OPTIONS), std::end(DEVICE_OPTIONS),
                                   [&](const DeviceOptionRow& candidate) { return candidate.option == record.option; });
    std::vector<uint8_t> bytes = bytesOf(&record, sizeof(record));
    if (row == std::end(DEVICE_OPTIONS)) return {record.option, {}, "an option not known here", std::move(bytes)};
    return {record.option, row->name, deviceValue(record, row->form), std::move(bytes)};
}

std::string hexText(const std::vector<uint8_t>& bytes) {
    return fmt::format("{:02x}", fmt::join(bytes, " "));
}

}  // namespace runhost
