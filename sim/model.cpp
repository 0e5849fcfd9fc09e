// The host's half of a model's life: devices, contexts and graphs that are handles and ledger lines.
#include <mutex>
#include <set>
#include <vector>

#include "context_records.h"
#include "contexts.h"
#include "decode.h"
#include "ledger.h"
#include "power_ids.h"
#include "regions.h"
#include "zant_sim/sim_backend.h"

using namespace zant::sim;

namespace {

uint64_t createContext(const char* operation, bool fromBinary, const void* device, ZantConfigWrapper** configs,
                       uint32_t count, void** context) {
    const ContextRecords records = readContextRecords(configs, count);
    if (context != nullptr) *context = nullptr;
    return answer(operation, describeHandle(device) + ", " + records.text, [&]() -> std::string {
        if (context == nullptr) return "nowhere to put the context";
        if (records.misuse.empty()) *context = contexts().create(fromBinary, records.detachable);
        return records.misuse;
    });
}

uint64_t addGraph(const char* operation, const std::string& arguments, bool retrieved, const void* context,
                  void** graph) {
    if (graph != nullptr) *graph = nullptr;
    return answer(operation, arguments, [&]() -> std::string {
        return graph == nullptr ? "nowhere to put the graph" : contexts().addGraph(context, retrieved, *graph);
    });
}

std::mutex g_devicesMutex;
std::set<const void*> g_devices;

// Whether the device was the last one.
bool removeDevice(const void* device) {
    const std::lock_guard<std::mutex> lock(g_devicesMutex);
    return g_devices.erase(device) > 0 && g_devices.empty();
}

}  // namespace

uint64_t ZantSim_createDevice(ZantConfigWrapper** configs, uint32_t count, void** device) {
    const uint64_t status = ledger().call("createDevice", describeDeviceConfigs(configs, count));
    if (device == nullptr) return 1;
    *device = status == 0 ? makeHandle(HandleKind::DEVICE) : nullptr;
    const std::lock_guard<std::mutex> lock(g_devicesMutex);
    if (status == 0) g_devices.insert(*device);
    return status;
}

uint64_t ZantSim_freeDevice(void* device) {
    const uint64_t status = ledger().enter("freeDevice");
    const size_t left = status == 0 && removeDevice(device) ? powerIds().liveCount() : 0;
    const std::string misuse = left == 0 ? "" : "freeDevice: power config ids not destroyed: " + std::to_string(left);
    ledger().write("freeDevice(" + describeHandle(device) + ")", status, misuse);
    return device == nullptr ? 1 : status;
}

uint64_t ZantSim_createContext(void* device, ZantConfigWrapper** configs, uint32_t count, void** context) {
    return createContext("createContext", false, device, configs, count, context);
}

uint64_t ZantSim_createContextFromBinary(void* device, ZantConfigWrapper** configs, uint32_t count, void** context) {
    return createContext("createContextFromBinary", true, device, configs, count, context);
}

uint64_t ZantSim_createContextsFromBinaryList(void* device, ZantSimContextRequest* requests, uint32_t requestCount,
                                              ZantConfigWrapper** common, uint32_t commonCount) {
    const ContextRecords shared = readContextRecords(common, commonCount);
    if (requests == nullptr) requestCount = 0;
    std::string misuse = requestCount == 0 ? "no contexts asked for" : shared.misuse;
    std::string text = describeHandle(device) + ", common: " + shared.text;
    std::vector<bool> detachable;
    for (uint32_t i = 0; i < requestCount; ++i) requests[i].context = nullptr;
    for (uint32_t i = 0; misuse.empty() && i < requestCount; ++i) {
        const ContextRecords records = readContextRecords(requests[i].configs, requests[i].count);
        text += ", " + quoted(requests[i].key) + ": " + records.text;
        misuse = records.misuse;
        detachable.push_back(records.detachable);
    }
    return answer("createContextsFromBinaryList", text, [&] {
        for (uint32_t i = 0; misuse.empty() && i < requestCount; ++i) {
            requests[i].context = contexts().create(true, detachable[i]);
        }
        return misuse;
    });
}

uint64_t ZantSim_freeContext(void* context) {
    const uint64_t status = answer("freeContext", describeHandle(context), [&] { return contexts().free(context); });
    // Of the context that is gone only its address is used.
    const size_t tensors = status == 0 ? regions().removeAll(context) : 0;  // NOLINT(clang-analyzer-unix.Malloc)
    if (tensors > 0) {
        ledger().add("leftover: " + describeHandle(context) + " was freed with " + std::to_string(tensors) +
                     " registered tensors");
    }
    return status;
}

uint64_t ZantSim_createGraph(void* context, const char* name, ZantConfigWrapper** configs, void** graph) {
    const std::string arguments =
        describeHandle(context) + ", " + quoted(name) + ", " + describeConfigs(configs, UINT32_MAX);
    return addGraph("createGraph", arguments, false, context, graph);
}

uint64_t ZantSim_retrieveGraph(void* context, const char* name, void** graph) {
    return addGraph("retrieveGraph", describeHandle(context) + ", " + quoted(name), true, context, graph);
}

uint64_t ZantSim_finalizeGraph(void* graph) {
    return answer("finalizeGraph", describeHandle(graph), [&] {
        return contexts().contextOf(graph) == nullptr ? describeHandle(graph) + " is not there" : "";
    });
}

uint64_t ZantSim_executeGraph(void* graph, ZantConfigWrapper** configs, uint32_t count) {
    return answer("executeGraph", describeHandle(graph) + ", " + describeConfigs(configs, count), [&] {
        const void* context = contexts().contextOf(graph);
        if (context == nullptr) return describeHandle(graph) + " is not there";
        std::string misuse = contexts().checkAttached(context);
        return misuse.empty() ? regions().checkMemory(context) : misuse;
    });
}
