// Hooks of graphs, runs and contexts while no records are built for them and no perf driver exists: lists stay
// untouched, and what would be voted is told.
#include "extension/kor_backend.h"
#include "platform/logger.h"

namespace zant::kor {

bool KORBackend::beforeContextCreate(ZantConfigWrapper***, uint32_t*) {
    return true;
}

bool KORBackend::afterContextCreate() {
    return true;
}

bool KORBackend::beforeGraphsCompose(GraphConfigInfo_t***, uint32_t*) {
    return true;
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

bool KORBackend::beforeGraphExecute(const char*, ZantConfigWrapper***, uint32_t*) {
    ZANT_LOG_INFO("PerfDriver not available before graph execute");
    return true;
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

bool KORBackend::beforeContextCreateFromBinary(ZantConfigWrapper***, uint32_t*) {
    ZANT_LOG_INFO("PerfDriver not available before create from binary");
    return true;
}

bool KORBackend::afterContextCreateFromBinary() {
    ZANT_LOG_INFO("PerfDriver not available after create from binary");
    return true;
}

bool KORBackend::beforeContextCreateFromBinaryList(std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>*,
                                                   ZantConfigWrapper***, uint32_t*) {
    ZANT_LOG_INFO("PerfDriver not available before creating contexts from binary list");
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

}  // namespace zant::kor
