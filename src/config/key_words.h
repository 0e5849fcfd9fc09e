// The words that the sections look for in a flat key, and the search that finds all of them in one pass.
//
// A word counts wherever it stands in the key, also across a '/'. Since a key's beginning is shared by all leaves
// below it, the search is a state that is carried along the path: each member name is read once, whatever hangs
// below it.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace zant::kor {

inline constexpr auto KEY_WORDS = std::to_array<std::string_view>(
    {// sections
     "devices", "graphs", "context", "groupContext/share_resources", "groupContext/share_resources_optimization_type",
     "groupContext/reused_io_limit_mb", "memory/mem_type",
     // devices
     "device_id", "soc_id", "soc_model", "dsp_arch", "pd_session", "use_dynamic_partitioning", "use_client_context",
     "profiling_level", "async_voting", "enable_kor_extension", "consolidate_kor_extension", "core_id", "core_type",
     "device_type", "enable_async_execute", "cores", "rpc_control_latency", "rpc_polling_time", "dru_timeout_us",
     "perf_profile", "custom", "druControl", "adaptive_polling_time", "ddr_perf_mode",
     // custom perf states
     "sustainInferencePerfState", "graphState", "dcvsControl", "cengControl", "dcvsExpControl", "cengExpControl",
     "custom/dcvsControl", "sustainVote", "start", "done", "enableDcvs", "powerMode", "sleep_latency_us",
     "sleep_disable", "sleepDisable", "busVoltageCornerMin", "busVoltageCornerTarget", "busVoltageCornerMax",
     "coreVoltageCornerMin", "coreVoltageCornerTarget", "coreVoltageCornerMax", "corePerfMode", "busPerfMode",
     "druPerfMode", "druPickDefault", "druVoltageCornerMin", "druVoltageCornerTarget", "druVoltageCornerMax",
     "cengPerfMode", "cengVoltageCornerMin", "cengVoltageCornerTarget", "cengVoltageCornerMax",
     // graphs
     "graph_names", "finalize_config", "num_cores", "O", "assume_same_quant", "share_io_buffer",
     "advanced_activation_fusion", "high_precision_sigmoid", "fp16_clamp_overflow", "monolithic_lstm",
     "precision_compensation", "enable_predication", "short_depth_conv_on_dru_off",
     "fold_relu_activation_into_conv_off", "dlbc_weights", "dlbc", "spad_retention", "cached_weights",
     "sparse_weights_compression", "fp16_relaxed_precision", "slu_threads", "spad_mb", "spad_size", "weights_packing",
     "slc_alloc_enable", "dru_op_bounding", "dru_op_bounding/dru_frequency", "dru_op_bounding/dsp_core_frequency",
     "/dynamic_partitioning/",
     // context
     "contextKey", "reference_weight_sharing_enabled", "weight_sharing_enabled", "concurrent_group_registration",
     "group_id", "max_spill_fill_buffer_for_group", "file_read_memory_budget_in_mb", "dsp_memory_profiling_enabled",
     "io_memory_estimation", "prepare_only", "init_acceleration", "skip_validation_on_binary_section", "extended_udma",
     "lora_weight_sharing_ram_preload", "lora_preload_buffer_group", "lora_weight_sharing",
     "detachable_buffers_enabled", "hard_detach_enabled", "reused_io_limit_mb", "graph_splitting_configs",
     "graph_splitting_enabled", "num_prepare_threads", "concurrent_deserialization_patch"});

// A position in KEY_WORDS.
enum class KeyWord : uint8_t {};

// The word of this text; a text that KEY_WORDS lacks does not compile.
consteval KeyWord word(std::string_view text) {
    for (size_t i = 0; i < KEY_WORDS.size(); ++i) {
        if (KEY_WORDS[i] == text) return static_cast<KeyWord>(i);
    }
    throw "not a key word";
}

class KeyWordSet {
public:
    bool has(KeyWord word) const noexcept {
        const auto bit = static_cast<unsigned>(word);
        return ((m_bits[bit / 64] >> (bit % 64)) & 1U) != 0;
    }
    void add(KeyWord word) noexcept {
        const auto bit = static_cast<unsigned>(word);
        m_bits[bit / 64] |= uint64_t{1} << (bit % 64);
    }
    void add(const KeyWordSet& other) noexcept {
        m_bits[0] |= other.m_bits[0];
        m_bits[1] |= other.m_bits[1];
    }

private:
    std::array<uint64_t, 2> m_bits{};
};

static_assert(KEY_WORDS.size() <= 128, "KeyWordSet holds 128 words");

// The search carried along a path: what was found so far, and the state that the next piece goes on from.
struct KeyWordSearch {
    uint16_t state = 0;
    KeyWordSet found;
};

// Goes on with one more piece of text. found of the result holds only the words that end within the piece.
KeyWordSearch searchKeyWords(uint16_t state, std::string_view piece) noexcept;

}  // namespace zant::kor
