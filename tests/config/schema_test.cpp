// The compiled-in schema against the members and types that a document may have: nothing less, nothing more.
#include "config/schema.h"

#include <gmock/gmock.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "platform/json_types.h"

namespace zant::test {
namespace {

using kor::JsonValue;

// An object's members as "name type", required ones with a '!' behind the name. Types: i integer, n number, b boolean,
// s string, w number that is a multiple of 1, o object with free members, @name an object of this table, [..] an
// array, <..> an enum, a|b an anyOf; other keywords stand behind in braces.
const std::map<std::string, std::string> OBJECTS = {
    {"root",
     "graphs [@graph] devices [@device] context [@contextItem]|@contextItem groupContext @group memory @memory"},
    {"graph",
     "graph_names [s] spad_mb i spad_size i dru_op_bounding @druBounding fp16_relaxed_precision i num_cores i "
     "dynamic_partitioning [i] slu_threads i O w assume_same_quant b share_io_buffer b "
     "advanced_activation_fusion b short_depth_conv_on_dru_off b high_precision_sigmoid b fp16_clamp_overflow b "
     "monolithic_lstm b precision_compensation b fold_relu_activation_into_conv_off b dlbc w dlbc_weights w "
     "cached_weights w sparse_weights_compression w slc_alloc_enable w finalize_config o weights_packing b "
     "perf_profile s spad_retention w"},
    {"druBounding", "dru_frequency! n dsp_core_frequency! n"},
    {"device",
     "device_id i core_id [i] core_type i device_type i enable_async_execute b soc_id i soc_model i dsp_arch s "
     "pd_session s use_dynamic_partitioning b enable_kor_extension b consolidate_kor_extension b "
     "profiling_level s use_client_context b async_voting b cores [@core]"},
    {"core",
     "perf_profile s rpc_control_latency i rpc_polling_time i dru_timeout_us i adaptive_polling_time i "
     "ddr_perf_mode b custom @customObject|[@customItem] druControl @dru"},
    {"customObject", "dcvsControl! @legacyDcvs"},
    {"customItem",
     "sustainInferencePerfState b dcvsControl @dcvs druControl @dru cengControl @ceng dcvsExpControl @dcvsExp "
     "cengExpControl @ceng graphState! "
     "[<[\"inference_start\",\"init_start\",\"deinit_start\",\"inference_done\",\"init_done\",\"deinit_done\"]>]{"
     "minItems:1,uniqueItems:true}"},
    {"legacyDcvs",
     "sustainVote b enableDcvs b powerMode s sleep_latency_us i sleep_disable b busVoltageCornerMin! @pair "
     "busVoltageCornerTarget! @pair busVoltageCornerMax! @pair coreVoltageCornerMin! @pair "
     "coreVoltageCornerTarget! @pair coreVoltageCornerMax! @pair"},
    {"pair", "start! s done! s"},
    {"dcvs",
     "enableDcvs b powerMode s sleep_latency_us i sleep_disable b busVoltageCornerMin! s "
     "busVoltageCornerTarget! s busVoltageCornerMax! s coreVoltageCornerMin! s coreVoltageCornerTarget! s "
     "coreVoltageCornerMax! s"},
    {"dcvsExp",
     "powerMode s sleep_latency_us i sleepDisable i corePerfMode i busPerfMode i busVoltageCornerMin! s "
     "busVoltageCornerTarget! s busVoltageCornerMax! s coreVoltageCornerMin! s coreVoltageCornerTarget! s "
     "coreVoltageCornerMax! s"},
    {"dru", "druPickDefault i druPerfMode i druVoltageCornerMin s druVoltageCornerTarget s druVoltageCornerMax s"},
    {"ceng", "cengPerfMode i cengVoltageCornerMin! s cengVoltageCornerTarget! s cengVoltageCornerMax! s"},
    {"contextItem",
     "contextKey s weight_sharing_enabled b max_spill_fill_buffer_for_group i group_id i "
     "concurrent_group_registration @registration file_read_memory_budget_in_mb i dsp_memory_profiling_enabled "
     "b io_memory_estimation b prepare_only b init_acceleration b skip_validation_on_binary_section b "
     "extended_udma b lora_weight_sharing b detachable_buffers_enabled b hard_detach_enabled b "
     "lora_weight_sharing_ram_preload b lora_preload_buffer_group [[s]] reused_io_limit_mb i "
     "reference_weight_sharing_enabled b graph_splitting_enabled b graph_splitting_configs @splitting "
     "concurrent_deserialization_patch s"},
    {"registration", "group_id i max_spill_fill_buffer_for_group i"},
    {"splitting", "graph_splitting_enabled b num_prepare_threads i{minimum:0,maximum:4294967295}|<[\"auto\"]>"},
    {"group", "share_resources b share_resources_optimization_type i reused_io_limit_mb i"},
    {"memory", "mem_type <[\"shared_buffer\"]>"},
};

std::string compact(const JsonValue& value) {
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    value.Accept(writer);
    return text.GetString();
}

std::string spellMembers(const std::map<std::string, std::string>& members) {
    std::string text;
    for (const auto& [name, type] : members) text += " " + name + " " + type;
    return "(" + text + " )";
}

// Writes a node of the schema in the notation of OBJECTS, with objects spelt out.
class Speller {
public:
    explicit Speller(const JsonValue& schema) : m_schema(schema) {}

    std::string spell(const JsonValue& node) const {
        if (node.HasMember("$ref")) return spell(*kor::JsonPointer(node["$ref"].GetString()).Get(m_schema));
        std::string extras;
        for (const auto& member : node.GetObject()) {
            const std::string name = member.name.GetString();
            if (SPELT.contains(name)) continue;
            extras += (extras.empty() ? "" : ",") + name + ":" + compact(member.value);
        }
        return spellType(node) + (extras.empty() ? "" : "{" + extras + "}");
    }

private:
    std::string spellType(const JsonValue& node) const {
        if (node.HasMember("anyOf")) return spell(node["anyOf"][0]) + "|" + spell(node["anyOf"][1]);
        const std::string type = node["type"].GetString();
        if (node.HasMember("enum")) return "<" + compact(node["enum"]) + ">";
        if (type == "array") return "[" + spell(node["items"]) + "]";
        if (node.HasMember("multipleOf")) return type == "number" && compact(node["multipleOf"]) == "1" ? "w" : "?";
        if (!node.HasMember("properties")) return type.substr(0, 1);
        std::map<std::string, std::string> members;
        for (const auto& member : node["properties"].GetObject()) {
            const std::string name = member.name.GetString();
            members[name + (isRequired(node, name) ? "!" : "")] = spell(member.value);
        }
        return spellMembers(members);
    }
    static bool isRequired(const JsonValue& node, const std::string& name) {
        return node.HasMember("required") && compact(node["required"]).find('"' + name + '"') != std::string::npos;
    }

    inline static const std::set<std::string> SPELT = {"anyOf",      "type",     "enum",        "items",  "multipleOf",
                                                       "properties", "required", "definitions", "$schema"};
    const JsonValue& m_schema;
};

std::string expand(const std::string& type);

std::string spellObject(const std::string& object) {
    std::istringstream words(OBJECTS.at(object));
    std::map<std::string, std::string> members;
    for (std::string name, type; words >> name >> type;) members[name] = expand(type);
    return spellMembers(members);
}

std::string expand(const std::string& type) {
    const size_t at = type.find('@');
    if (at == std::string::npos) return type;
    const size_t end = std::min(type.find_first_of("]|", at), type.size());
    return type.substr(0, at) + spellObject(type.substr(at + 1, end - at - 1)) + expand(type.substr(end));
}

TEST(ConfigSchema, HoldsExactlyTheDescribedMembers) {
    kor::JsonTree schema;
    schema.Parse(kor::configSchemaText);
    ASSERT_FALSE(schema.HasParseError());
    EXPECT_STREQ(schema["$schema"].GetString(), "http://json-schema.org/draft-07/schema#");
    EXPECT_EQ(Speller(schema).spell(schema), spellObject("root"));
}

}  // namespace
}  // namespace zant::test
