// The host's half of a model's life: devices, contexts and graphs that are handles and ledger lines.
#include <mutex>
#include <set>

#include "decode.h"
#include "ledger.h"
#include "power_ids.h"
#include "zant_sim/sim_backend.h"

using namespace zant::sim;

namespace {

uint64_t create(HandleKind kind, const char* operation, const std::string& arguments, void** handle) {
    const uint64_t status = ledger().call(operation, arguments);
    if (handle == nullptr) return 1;
    *handle = status == 0 ? makeHandle(kind) : nullptr;
    return status;
}

uint64_t use(const char* operation, const void* handle, const std::string& more = {}) {
    const uint64_t status = ledger().call(operation, describeHandle(handle) + more);
    return handle == nullptr ? 1 : status;
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
    const uint64_t status = create(HandleKind::DEVICE, "createDevice", describeDeviceConfigs(configs, count), device);
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
    return create(HandleKind::CONTEXT, "createContext", describeHandle(device) + ", " + describeConfigs(configs, count),
                  context);
}

uint64_t ZantSim_freeContext(void* context) {
    return use("freeContext", context);
}

uint64_t ZantSim_createGraph(void* context, const char* name, ZantConfigWrapper** configs, void** graph) {
    return create(HandleKind::GRAPH, "createGraph",
                  describeHandle(context) + ", " + quoted(name) + ", " + describeConfigs(configs, UINT32_MAX), graph);
}

uint64_t ZantSim_finalizeGraph(void* graph) {
    return use("finalizeGraph", graph);
}

uint64_t ZantSim_executeGraph(void* graph, ZantConfigWrapper** configs, uint32_t count) {
    return use("executeGraph", graph, ", " + describeConfigs(configs, count));
}
