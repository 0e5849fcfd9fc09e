#include <exception>

#include "extension/kor_backend.h"
#include "platform/logger.h"

zant::tools::runhost::IBackend* createBackendInterface() {
    try {
        return new zant::kor::KORBackend();
    } catch (const std::exception& error) {
        ZANT_LOG_ERROR("KORBackend() object allocation failed, err = %s", error.what());
        return nullptr;
    }
}

void destroyBackendInterface(zant::tools::runhost::IBackend* backend) {
    delete backend;
}
