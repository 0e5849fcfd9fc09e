#include "extension/backend_common.h"

#include <cstdlib>

#include "platform/exception_guard.h"
#include "platform/logger.h"

namespace zant::tools::runhost {

namespace {

// The C locale's classes, whatever locale the host has set.
bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

bool BackendCommon::setupLogging(ZantLogCallback callback, ZantLogLevel maxLevel) {
    return kor::guarded("setupLogging", false,
                        [&] { return log::setupLogging(callback, static_cast<int32_t>(maxLevel)); });
}

bool BackendCommon::acceptSharedReference(std::shared_ptr<void>) {
    return true;
}

std::unique_ptr<iotensor::IBufferAlloc>& BackendCommon::getDefaultAllocator(
    std::unique_ptr<iotensor::IBufferAlloc>& holder) {
    holder.reset();
    return holder;
}

void BackendCommon::releaseBlock(void** holder) {
    if (holder != nullptr) std::free(*holder);
}

bool BackendCommon::setPerfProfile(uint32_t) {
    return true;
}

bool BackendCommon::beforeContextFree(std::vector<void*>) {
    return true;
}

bool BackendCommon::beforeContextCreateFromBinaryList(std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>*,
                                                      ZantConfigWrapper***, uint32_t*) {
    return true;
}

bool BackendCommon::afterContextCreateFromBinaryList() {
    return true;
}

std::unique_ptr<iotensor::IBufferAlloc>& BackendCommon::getBufferAllocator(
    std::unique_ptr<iotensor::IBufferAlloc>& holder) {
    holder.reset();
    return holder;
}

bool BackendCommon::setAppType(uint32_t) {
    return true;
}

bool BackendCommon::setGraphOptions(int32_t, std::string dspArch, uint32_t, std::string graphName, uint32_t, uint32_t,
                                    uint32_t, uint32_t) {
    dspArch.clear();
    graphName.clear();
    return true;
}

bool BackendCommon::allocateExternalBuffers(void*, std::string, std::string, std::string) {
    return true;
}

bool BackendCommon::detachableBuffersEnabled() {
    return false;
}

bool BackendCommon::detachBuffers(void*) {
    return true;
}

bool BackendCommon::attachBuffers(void*) {
    return true;
}

std::string BackendCommon::sanitizeName(std::string text) {
    for (char& c : text) {
        if (!isLetter(c) && !isDigit(c) && c != '_') c = '_';
    }
    if (text.empty() || isDigit(text.front())) text.insert(text.begin(), '_');
    return text;
}

}  // namespace zant::tools::runhost
