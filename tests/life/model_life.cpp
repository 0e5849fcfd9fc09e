#include "life/model_life.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "zelmar_kor/memory_records.h"

namespace zant::test {
namespace {

using tools::iotensor::IBufferAlloc;
using tools::runhost::IBackend;

constexpr uintptr_t CONTEXTS = 2;

std::atomic<size_t> g_errors{0};

// Expands each message: an argument that its conversion does not fit shows under the sanitizers.
void countErrors(const char* format, ZantLogLevel level, uint64_t, va_list arguments) {
    char text[512];
    std::vsnprintf(text, sizeof(text), format, arguments);
    if (level == ZANT_LOG_LEVEL_ERROR) ++g_errors;
}

// The host's own arguments, nothing where memory is too short for the host itself.
template <class Make>
auto argument(Make make) -> std::optional<decltype(make())> {
    try {
        return make();
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

void* handle(uintptr_t number) {
    return reinterpret_cast<void*>(number);
}

}  // namespace

std::string everyOption(const std::string& patchFile, bool asyncVoting) {
    std::string document =
        R"({"devices":[{"device_id":0,"soc_model":60,"dsp_arch":"v81","pd_session":"signed",)"
        R"("use_client_context":true,"use_dynamic_partitioning":true,"profiling_level":"linting","core_id":[0,1],)"
        R"("enable_kor_extension":true,"consolidate_kor_extension":true,"enable_async_execute":true,)"
        R"("async_voting":)";
    document += asyncVoting ? "true" : "false";
    document +=
        R"(,"cores":[{"perf_profile":"custom","rpc_control_latency":100,"rpc_polling_time":9999,"dru_timeout_us":5,)"
        R"("adaptive_polling_time":100,"ddr_perf_mode":true,"custom":[)"
        R"({"graphState":["init_start","init_done","inference_start","inference_done","deinit_start","deinit_done"],)"
        R"("sustainInferencePerfState":true,"dcvsExpControl":{"sleep_latency_us":40,)"
        R"("powerMode":"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_PERFORMANCE_MODE",)"
        R"("busVoltageCornerMin":"DCVS_EXP_VCORNER_SVS","busVoltageCornerTarget":"DCVS_EXP_VCORNER_SVS",)"
        R"("busVoltageCornerMax":"DCVS_EXP_VCORNER_SVS","coreVoltageCornerMin":"DCVS_EXP_VCORNER_SVS",)"
        R"("coreVoltageCornerTarget":"DCVS_EXP_VCORNER_SVS","coreVoltageCornerMax":"DCVS_EXP_VCORNER_SVS"}}]}]}],)"
        R"("graphs":[{"graph_names":["encoder","a second name of the same graph"],"weights_packing":true,)"
        R"("slc_alloc_enable":1,"short_depth_conv_on_dru_off":true,"monolithic_lstm":true,"O":2,)"
        R"("fold_relu_activation_into_conv_off":true,"enable_predication":true,"fp16_clamp_overflow":true,)"
        R"("precision_compensation":true,"high_precision_sigmoid":true,"advanced_activation_fusion":false,)"
        R"("share_io_buffer":true,"assume_same_quant":true,"finalize_config":{"x":"a text","y":[1,2.5,true]},)"
        R"("cached_weights":1,"dlbc":1,"dynamic_partitioning":[5,6,7],"spad_retention":1,"spad_mb":8,"num_cores":1,)"
        R"("dru_op_bounding":{"dru_frequency":1,"dsp_core_frequency":1},"fp16_relaxed_precision":1,"slu_threads":1},)"
        R"({"graph_names":["decoder"],"perf_profile":"burst","spad_retention":1,"slu_threads":2}],)"
        R"("context":[{"contextKey":"a key that fits no short string","weight_sharing_enabled":true,"group_id":0,)"
        R"("max_spill_fill_buffer_for_group":5,"file_read_memory_budget_in_mb":0,"dsp_memory_profiling_enabled":true,)"
        R"("io_memory_estimation":true,"prepare_only":true,"init_acceleration":true,)"
        R"("skip_validation_on_binary_section":true,"extended_udma":false,"lora_weight_sharing":true,)"
        R"("concurrent_group_registration":{"group_id":7,"max_spill_fill_buffer_for_group":6},)"
        R"("detachable_buffers_enabled":true,"lora_weight_sharing_ram_preload":true,"reused_io_limit_mb":9,)"
        R"("lora_preload_buffer_group":[["a","b"],["c"]],"reference_weight_sharing_enabled":true,)"
        R"("graph_splitting_configs":{"graph_splitting_enabled":true,"num_prepare_threads":"auto"})";
    if (!patchFile.empty()) document += R"(,"concurrent_deserialization_patch":")" + patchFile + "\"";
    document +=
        R"(},{"contextKey":"second","lora_preload_buffer_group":[["d"]]}],)"
        R"("groupContext":{"share_resources":true,"share_resources_optimization_type":2,"reused_io_limit_mb":4},)"
        R"("memory":{"mem_type":"shared_buffer"}})";
    return document;
}

ModelLife::ModelLife(Factory factory, const char* config, const char* pool)
    : m_factory(factory), m_config(config), m_pool(pool) {}

ModelLife::~ModelLife() {
    destroy();
}

void ModelLife::destroy() {
    m_factory.destroy(m_backend);
    m_backend = nullptr;
    m_isLoaded = false;
}

void ModelLife::forgetFailures() {
    m_failed = m_silent = 0;
    m_firstFailed = "";
}

template <class Call>
bool ModelLife::hook(const char* name, Call call, bool mayBeSilent) {
    const size_t before = g_errors;
    if (call()) return true;
    const bool isSilent = g_errors == before;
    if (isSilent && mayBeSilent) return false;
    if (m_failed++ == 0) m_firstFailed = name;
    if (isSilent) ++m_silent;
    return false;
}

bool ModelLife::makeObject() {
    if (m_backend == nullptr) m_backend = m_factory.create();
    if (m_backend == nullptr) return false;
    hook(
        "setupLogging", [&] { return m_backend->setupLogging(countErrors, ZANT_LOG_LEVEL_DEBUG); }, true);
    if (m_isLoaded) return true;
    auto config = argument([&] { return std::string(m_config); });
    m_isLoaded =
        config &&
        hook("bindInterfaceProviders", [&] { return m_backend->bindInterfaceProviders(Neighbours::getProviders); }) &&
        hook("loadConfig", [&] { return m_backend->loadConfig(std::move(*config)); });
    return m_isLoaded;
}

void ModelLife::run(Road road, bool isShort) {
    begin(road, isShort);
    if (!m_isLoaded) return;
    for (const char* graph : {"encoder", "decoder", "unknown"}) executeOnce(graph);
    end();
}

void ModelLife::begin(Road road, bool isShort) {
    m_firstContext += CONTEXTS;
    if (!makeObject()) return;
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    hook("beforeDeviceCreate", [&] { return m_backend->beforeDeviceCreate(&list, &count); });
    hook("afterDeviceCreate", [&] { return m_backend->afterDeviceCreate(); });
    if (!isShort)
        hook(
            "enableKorExtension", [&] { return m_backend->enableKorExtension(handle(1)); }, true);
    createContexts(road);
    if (isShort) return;
    useBuffers();
    useTensors();
}

void ModelLife::executeOnce(const char* graph) {
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    hook("beforeGraphExecute", [&] { return m_backend->beforeGraphExecute(graph, &list, &count); });
    hook("afterGraphExecute", [&] { return m_backend->afterGraphExecute(); });
}

void ModelLife::end() {
    auto contexts = argument([&] { return std::vector{handle(m_firstContext), handle(m_firstContext + 1)}; });
    if (contexts) hook("beforeContextFree", [&] { return m_backend->beforeContextFree(std::move(*contexts)); });
    hook("afterContextFree", [&] { return m_backend->afterContextFree(); });
    hook("beforeDeviceFree", [&] { return m_backend->beforeDeviceFree(); });
}

void ModelLife::createContexts(Road road) {
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    if (road == Road::compose) {
        hook("beforeContextCreate", [&] { return m_backend->beforeContextCreate(&list, &count); });
        hook("afterContextCreate", [&] { return m_backend->afterContextCreate(); });
        GraphConfigInfo_t** infos = nullptr;
        hook("beforeGraphsCompose", [&] { return m_backend->beforeGraphsCompose(&infos, &count); });
        hook("afterGraphsCompose", [&] { return m_backend->afterGraphsCompose(); });
        hook("beforeGraphFinalize", [&] { return m_backend->beforeGraphFinalize(); });
        hook("afterGraphFinalize", [&] { return m_backend->afterGraphFinalize(); });
    } else if (road == Road::binary) {
        hook("beforeContextCreateFromBinary", [&] { return m_backend->beforeContextCreateFromBinary(&list, &count); });
        hook("afterContextCreateFromBinary", [&] { return m_backend->afterContextCreateFromBinary(); });
    } else {
        std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>> perContext;
        hook("beforeContextCreateFromBinaryList",
             [&] { return m_backend->beforeContextCreateFromBinaryList(&perContext, &list, &count); });
        hook("afterContextCreateFromBinaryList", [&] { return m_backend->afterContextCreateFromBinaryList(); });
        hook("beforeContextApplyBinarySection", [&] { return m_backend->beforeContextApplyBinarySection(); });
        hook("afterContextApplyBinarySection", [&] { return m_backend->afterContextApplyBinarySection(); });
    }
}

// A pool that waits makes allocateExternalBuffers say false without a line.
void ModelLife::useBuffers() {
    for (uintptr_t i = 0; i < CONTEXTS; ++i) {
        void* const context = handle(m_firstContext + i);
        const auto text = [&](const char* count) {
            return argument([&] { return m_pool + std::to_string(m_firstContext) + count; });
        };
        auto name = text("");
        auto spillFill = text(":2");
        auto backup = text(i == 0 ? "backup:1" : ":2");
        auto weights = text(":2");
        if (!name || !spillFill || !backup || !weights) continue;
        hook("setContextName", [&] { return m_backend->setContextName(context, std::move(*name)); });
        const auto allocate = [&] {
            return m_backend->allocateExternalBuffers(context, std::move(*spillFill), std::move(*backup),
                                                      std::move(*weights));
        };
        hook("allocateExternalBuffers", allocate, true);
    }
    hook("finalizeExternalBufferPools", [&] { return m_backend->finalizeExternalBufferPools(); });
    hook("detachBuffers", [&] { return m_backend->detachBuffers(handle(m_firstContext)); });
    hook("attachBuffers", [&] { return m_backend->attachBuffers(handle(m_firstContext)); });
    hook("detachBuffers", [&] { return m_backend->detachBuffers(handle(m_firstContext + 1)); });
}

void ModelLife::useTensors() {
    std::unique_ptr<IBufferAlloc> allocator;
    if (!hook(
            "getBufferAllocator", [&] { return m_backend->getBufferAllocator(allocator) != nullptr; }, true))
        return;
    constexpr uint32_t SHAPE[] = {4, 8};
    ZantTensor tensors[3] = {};
    for (ZantTensor& tensor : tensors) {
        tensor.dataType = 0x0232;
        tensor.rank = 2;
        tensor.dimensions = SHAPE;
    }
    // The functions of the record that the neighbours list begin at its byte 40.
    const ZantProviderRecord** providers = nullptr;
    uint32_t count = 0;
    Neighbours::getProviders(&providers, &count);
    const void* functions = &providers[0]->functions40;
    if (!hook("initialize", [&] { return allocator->initialize(handle(m_firstContext), functions) == 0; })) return;
    hook("allocate", [&] { return allocator->allocate(tensors, 3) == 0; });
    for (ZantTensor& tensor : tensors) {
        if (tensor.memoryHandle == nullptr) continue;  // it was not registered
        if (void* data = allocator->getBuffer(&tensor)) std::memset(data, 1, sizeof(float) * 4 * 8);
        hook("release", [&] { return allocator->release(&tensor) == 0; });
    }
}

}  // namespace zant::test
