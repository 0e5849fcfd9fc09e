// Hooks of graphs, runs and contexts while no records are built for them and no perf driver exists: lists stay
// untouched, and what would be voted is told.
#include "extension/kor_backend.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

bool hasOutPointers(const char* hook, const void* list, const void* count) {
    if (list != nullptr && count != nullptr) return true;
    ZANT_LOG_ERROR("%s: the list and its count need a place to go, got nullptr", hook);
    return false;
}

}  // namespace

bool KORBackend::beforeContextCreate(ZantConfigWrapper*** list, uint32_t* count) {
    return hasOutPointers("beforeContextCreate", list, count);
}

bool KORBackend::afterContextCreate() {
    return true;
}

bool KORBackend::beforeGraphsCompose(GraphConfigInfo_t*** list, uint32_t* count) {
    return hasOutPointers("beforeGraphsCompose", list, count);
}

bool KORBackend::afterGraphsCompose() {
    return true;
}

bool KORBackend::beforeGraphFinalize() {
    ZANT_LOG_INFO("PerfDriver not available before graph finalize");
    return true;
}

bool KORBackend::afterGraphFinalize() {
    ZANT_LOG_INFO("PerfDriver not available after graph finalize");
    return true;
}

bool KORBackend::beforeGraphExecute(const char*, ZantConfigWrapper*** list, uint32_t* count) {
    ZANT_LOG_INFO("PerfDriver not available before graph execute");
    return hasOutPointers("beforeGraphExecute", list, count);
}

bool KORBackend::afterGraphExecute() {
    ZANT_LOG_INFO("PerfDriver not available after graph execute.");
    return true;
}

bool KORBackend::beforeContextFree(std::vector<void*> contexts) {
    ZANT_LOG_INFO("PerfDriver not available before context free");
    for (const void* context : contexts) {
        if (context == nullptr) {
            ZANT_LOG_ERROR("Input context handles to beforeContextFree is NULL");
            return false;
        }
    }
    return true;
}

bool KORBackend::afterContextFree() {
    ZANT_LOG_INFO("PerfDriver not available after context free");
    return true;
}

bool KORBackend::beforeContextCreateFromBinary(ZantConfigWrapper*** list, uint32_t* count) {
    ZANT_LOG_INFO("PerfDriver not available before create from binary");
    return hasOutPointers("beforeContextCreateFromBinary", list, count);
}

bool KORBackend::afterContextCreateFromBinary() {
    ZANT_LOG_INFO("PerfDriver not available after create from binary");
    return true;
}

bool KORBackend::beforeContextCreateFromBinaryList(
    std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>* perContext, ZantConfigWrapper*** list,
    uint32_t* count) {
    ZANT_LOG_INFO("PerfDriver not available before creating contexts from binary list");
    if (!hasOutPointers("beforeContextCreateFromBinaryList", perContext == nullptr ? nullptr : list, count))
        return false;
    *list = nullptr;
    *count = 0;
    return true;
}

bool KORBackend::afterContextCreateFromBinaryList() {
    ZANT_LOG_INFO("PerfDriver not available after creating contexts from binary list");
    return true;
}

bool KORBackend::beforeContextApplyBinarySection() {
    ZANT_LOG_INFO("PerfDriver not available before context apply binary section");
    return true;
}

bool KORBackend::afterContextApplyBinarySection() {
    ZANT_LOG_INFO("PerfDriver not available after context apply binary section");
    return true;
}

bool KORBackend::allocateExternalBuffers(void*, std::string spillFillPoolId, std::string spadBackupPoolId,
                                         std::string weightsPoolId) {
    if (!spillFillPoolId.empty() || !spadBackupPoolId.empty() || !weightsPoolId.empty()) {
        ZANT_LOG_ERROR("External buffers are not available");
    }
    return false;
}

bool KORBackend::detachBuffers(void*) {
    ZANT_LOG_ERROR("Detaching buffers is not available");
    return false;
}

bool KORBackend::attachBuffers(void*) {
    ZANT_LOG_WARN("Buffers already in the desired state %s", "attached.");
    return true;
}

}  // namespace zant::kor
