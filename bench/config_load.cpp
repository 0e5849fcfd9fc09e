// Loading a document, against what RapidJSON alone needs to parse it, compile the schema and validate.
#include <rapidjson/document.h>
#include <rapidjson/schema.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "bench/harness.h"
#include "config/config_parser.h"
#include "config/schema.h"

namespace {

// One graph with 25 keys.
void appendGraph(std::string& text, int number) {
    const std::string name = std::to_string(number);
    text += R"({"graph_names":["graph_)" + name + R"("],"spad_mb":8,"fp16_relaxed_precision":1,"num_cores":2,)";
    text += R"("slu_threads":4,"O":3,"assume_same_quant":true,"share_io_buffer":false,)";
    text += R"("advanced_activation_fusion":true,"short_depth_conv_on_dru_off":false,)";
    text += R"("high_precision_sigmoid":true,"fp16_clamp_overflow":false,"monolithic_lstm":true,)";
    text += R"("precision_compensation":false,"fold_relu_activation_into_conv_off":true,"dlbc":1,)";
    text += R"("dlbc_weights":0,"cached_weights":1,"slc_alloc_enable":1,"weights_packing":true,)";
    text += R"("perf_profile":"burst","spad_retention":1,"dynamic_partitioning":[1,2],"enable_predication":true})";
}

std::string documentOf(int graphs) {
    std::string text = R"({"graphs":[)";
    for (int i = 0; i < graphs; ++i) {
        if (i > 0) text += ',';
        appendGraph(text, i);
    }
    return text + "]}";
}

const char* const TYPICAL =
    R"({"graphs":[{"graph_names":["encoder","decoder"],"spad_mb":8,"O":3,"fp16_relaxed_precision":1}],)"
    R"("devices":[{"device_id":0,"dsp_arch":"v73","pd_session":"unsigned","async_voting":true,)"
    R"("cores":[{"perf_profile":"burst","rpc_control_latency":100,"rpc_polling_time":9999}]}],)"
    R"("context":{"weight_sharing_enabled":true},"memory":{"mem_type":"shared_buffer"}})";

void load(const std::string& text) {
    std::vector<zant::kor::KORDeviceConfig> devices;
    std::vector<zant::kor::KORGraphConfig> graphs;
    std::vector<zant::kor::KORContextConfig> contexts;
    zant::kor::KORGroupContextConfig groupContext;
    zant::kor::KORMemoryConfig memory;
    zant::kor::KORConfigParser parser;
    if (!parser.parseConfig(text, devices, graphs, contexts, groupContext, memory)) std::abort();
    bench::keep(graphs.size());
}

void floorOf(const std::string& text) {
    rapidjson::Document document;
    document.Parse(text.c_str());
    rapidjson::Document schemaText;
    schemaText.Parse(zant::kor::configSchemaText);
    const rapidjson::SchemaDocument schema(schemaText);
    rapidjson::SchemaValidator validator(schema);
    if (!document.Accept(validator)) std::abort();
}

void measure(const char* name, const std::string& text, int rounds, int calls) {
    const auto result = bench::compare([&] { load(text); }, [&] { floorOf(text); }, rounds, calls);
    std::printf("%-8s %9zu bytes: load %11.1f us, floor %11.1f us\n", name, text.size(), result.subject * 1e6,
                result.floor * 1e6);
    bench::figure((std::string("config_load/") + name).c_str(), result.ratio, 1.50);
}

// How many times longer ten times the keys take, the two sizes measured in turns.
void measureGrowth(const char* name, int graphs, int rounds) {
    const std::string small = documentOf(graphs);
    const std::string large = documentOf(graphs * 10);
    const auto loadSmallTenTimes = [&small] {
        for (int i = 0; i < 10; ++i) load(small);
    };
    const auto result = bench::compare([&large] { load(large); }, loadSmallTenTimes, rounds, 1);
    bench::figure(name, result.ratio * 10, 11.0);
}

}  // namespace

int main() {
    measure("typical", TYPICAL, 31, 20);
    measure("1", documentOf(1), 31, 20);
    measure("10", documentOf(10), 31, 10);
    measure("100", documentOf(100), 21, 3);
    measure("1000", documentOf(1000), 11, 1);
    measure("10000", documentOf(10000), 7, 1);
    measureGrowth("config_load/growth_100_to_1000", 100, 21);
    measureGrowth("config_load/growth_1000_to_10000", 1000, 11);
}
