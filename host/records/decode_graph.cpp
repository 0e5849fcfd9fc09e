// Graph records: option names, and the value in the view that the option uses.
#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "records/decode.h"

namespace runhost {

namespace {

enum class Form { NUMBER, NUMBER64, FLAG, FREQUENCIES, ARRAY, TUNING, FINALIZE };

struct OptionRow {
    const char* name;
    uint32_t option;
    Form form;
};

constexpr OptionRow OPTIONS[] = {
    {"TUNING", KOR_GRAPH_OPTION_TUNING, Form::TUNING},
    {"FP16_RELAXED_PRECISION", KOR_GRAPH_OPTION_FP16_RELAXED_PRECISION, Form::NUMBER},
    {"SPAD_SIZE_MB", KOR_GRAPH_OPTION_SPAD_SIZE_MB, Form::NUMBER},
    {"FOLD_RELU_ACTIVATION_INTO_CONV_OFF", KOR_GRAPH_OPTION_FOLD_RELU_ACTIVATION_INTO_CONV_OFF, Form::FLAG},
    {"SHORT_DEPTH_CONV_ON_DRU_OFF", KOR_GRAPH_OPTION_SHORT_DEPTH_CONV_ON_DRU_OFF, Form::FLAG},
    {"SLU_THREADS", KOR_GRAPH_OPTION_SLU_THREADS, Form::NUMBER64},
    {"FINALIZE", KOR_GRAPH_OPTION_FINALIZE, Form::FINALIZE},
    {"NUM_CORES", KOR_GRAPH_OPTION_NUM_CORES, Form::NUMBER},
    {"SPAD_SIZE_BYTES", KOR_GRAPH_OPTION_SPAD_SIZE_BYTES, Form::NUMBER},
    {"DRU_OP_BOUNDING", KOR_GRAPH_OPTION_DRU_OP_BOUNDING, Form::FREQUENCIES},
    {"WEIGHTS_PACKING", KOR_GRAPH_OPTION_WEIGHTS_PACKING, Form::FLAG},
    {"ASSUME_SAME_QUANT", KOR_GRAPH_OPTION_ASSUME_SAME_QUANT, Form::FLAG},
    {"SHARE_IO_BUFFER", KOR_GRAPH_OPTION_SHARE_IO_BUFFER, Form::FLAG},
    {"ADVANCED_ACTIVATION_FUSION", KOR_GRAPH_OPTION_ADVANCED_ACTIVATION_FUSION, Form::FLAG},
    {"HIGH_PRECISION_SIGMOID", KOR_GRAPH_OPTION_HIGH_PRECISION_SIGMOID, Form::FLAG},
    {"MONOLITHIC_LSTM", KOR_GRAPH_OPTION_MONOLITHIC_LSTM, Form::FLAG},
    {"PRECISION_COMPENSATION", KOR_GRAPH_OPTION_PRECISION_COMPENSATION, Form::FLAG},
    {"ENABLE_PREDICATION", KOR_GRAPH_OPTION_ENABLE_PREDICATION, Form::FLAG},
    {"FP16_CLAMP_OVERFLOW", KOR_GRAPH_OPTION_FP16_CLAMP_OVERFLOW, Form::FLAG},
    {"DYNAMIC_PARTITIONING", KOR_GRAPH_OPTION_DYNAMIC_PARTITIONING, Form::ARRAY},
};

struct TuningRow {
    const char* name;
    uint32_t option;
};

constexpr TuningRow TUNINGS[] = {
    {"OPTIMIZATION_LEVEL", KOR_GRAPH_TUNING_OPTIMIZATION_LEVEL},
    {"DLBC", KOR_GRAPH_TUNING_DLBC},
    {"SLC_ALLOC", KOR_GRAPH_TUNING_SLC_ALLOC},
    {"SPAD_RETENTION", KOR_GRAPH_TUNING_SPAD_RETENTION},
    {"CACHED_WEIGHTS", KOR_GRAPH_TUNING_CACHED_WEIGHTS},
};

std::string arrayText(const KORGraphCustomConfig::Setting& setting) {
    const uint32_t count = setting.first.number;
    if (setting.array == nullptr) return fmt::format("{} elements nowhere", count);
    return fmt::format("[{}]", fmt::join(setting.array, setting.array + count, ", "));
}

std::string tuningText(const KORGraphCustomConfig::Setting& setting) {
    const auto* row = std::find_if(std::begin(TUNINGS), std::end(TUNINGS), [&](const TuningRow& candidate) {
        return candidate.option == setting.first.number;
    });
    if (row == std::end(TUNINGS)) return fmt::format("sub-option {} = {}", setting.first.number, setting.second);
    return fmt::format("{} ({}) = {}", row->name, row->option, setting.second);
}

std::string finalizeText(const KORGraphCustomConfig::Finalize& finalize) {
    const auto show = [&](const char* type, const auto& value) {
        return fmt::format("{} = {} ({})", finalize.name == nullptr ? "" : finalize.name, value, type);
    };
    switch (finalize.dataType) {
        case KOR_FINALIZE_DATA_TYPE_INT32:
            return show("int32", finalize.value.int32);
        case KOR_FINALIZE_DATA_TYPE_INT64:
            return show("int64", finalize.value.int64);
        case KOR_FINALIZE_DATA_TYPE_UINT32:
            return show("uint32", finalize.value.uint32);
        case KOR_FINALIZE_DATA_TYPE_UINT64:
            return show("uint64", finalize.value.uint64);
        case KOR_FINALIZE_DATA_TYPE_FLOAT32:
            return show("float32", finalize.value.float32);
        case KOR_FINALIZE_DATA_TYPE_BOOL:
            return show("bool", finalize.value.flag != 0);
        case KOR_FINALIZE_DATA_TYPE_TEXT:
            return show("text", finalize.value.text == nullptr ? "" : finalize.value.text);
        default:
            return show(fmt::format("type {:#x}", finalize.dataType).c_str(), finalize.value.uint64);
    }
}

std::string valueText(const KORGraphCustomConfig& record, Form form) {
    const KORGraphCustomConfig::Setting& setting = record.values.setting;
    switch (form) {
        case Form::NUMBER:
            return fmt::format("{}", setting.first.number);
        case Form::NUMBER64:
            return fmt::format("{}", record.values.number64);
        case Form::FLAG:
            return setting.first.flag != 0 ? "on" : "off";
        case Form::FREQUENCIES:
            return fmt::format("DRU {}, DSP core {}", setting.first.real, setting.second);
        case Form::ARRAY:
            return arrayText(setting);
        case Form::TUNING:
            return tuningText(setting);
        case Form::FINALIZE:
            return finalizeText(record.values.finalize);
    }
    return {};
}

}  // namespace

DecodedRecord decodeGraphRecord(const ZantConfigWrapper& wrapper) {
    if (!holdsCustomRecord(wrapper)) return notCustom(wrapper);
    const auto& record = *static_cast<const KORGraphCustomConfig*>(wrapper.customConfig);
    const auto* row = std::find_if(std::begin(OPTIONS), std::end(OPTIONS),
                                   [&](const OptionRow& candidate) { return candidate.option == record.option; });
    std::vector<uint8_t> bytes = bytesOf(&record, sizeof(record));
    if (row == std::end(OPTIONS)) return {record.option, {}, "an option not known here", std::move(bytes)};
    return {record.option, row->name, valueText(record, row->form), std::move(bytes)};
}

}  // namespace runhost
