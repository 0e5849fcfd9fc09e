#include "extension/context_properties.h"

#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr int64_t MOST_DETACHABLE_BUFFERS = 65536;

template <class Property>
bool ask(const ZantProviderRecord& backend, void* context, Property& property) {
    if (backend.contextGetProperty == nullptr) return false;
    ZantConfigWrapper wrapper{ZANT_CONFIG_OPTION_CUSTOM, 0, &property};
    void* properties[] = {&wrapper, nullptr};
    return backend.contextGetProperty(context, properties) == 0;
}

}  // namespace

uint64_t queryBufferSize(const ZantProviderRecord& backend, void* context, uint32_t property) {
    if (backend.contextGetProperty == nullptr) {
        ZANT_LOG_ERROR("queryBufferSize: contextGetProperty is nullptr");
        return 0;
    }
    ContextNumberProperty record{property, 0, 0};
    if (!ask(backend, context, record)) {
        ZANT_LOG_ERROR("queryBufferSize: contextGetProperty failed for option %d", static_cast<int>(property));
        return 0;
    }
    switch (property) {
        case ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE:
        case ZANT_CONTEXT_PROPERTY_WEIGHTS_SIZE:
        case ZANT_CONTEXT_PROPERTY_SPAD_BACKUP_SIZE:
            return static_cast<uint64_t>(record.answer);
        default:
            ZANT_LOG_ERROR("queryBufferSize: unsupported propertyOption %d", static_cast<int>(property));
            return 0;
    }
}

bool getDetachableBufferFds(const ZantProviderRecord& backend, void* context, std::vector<int32_t>& fds) {
    ContextNumberProperty count{ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT, 0, -1};
    if (!ask(backend, context, count) || count.answer < 0 || count.answer > MOST_DETACHABLE_BUFFERS) {
        ZANT_LOG_ERROR("Unable to get the property of number of detachable buffers count from backend");
        return false;
    }
    ZANT_LOG_DEBUG("KOR backend returned %ld detachable buffers present", static_cast<long>(count.answer));
    fds.resize(static_cast<size_t>(count.answer));
    ContextFdsProperty descriptors{ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS, 0, fds.data()};
    if (!ask(backend, context, descriptors)) {
        ZANT_LOG_ERROR("Unable to get the property of detachable buffers fds from backend");
        return false;
    }
    for (const int32_t fd : fds) ZANT_LOG_DEBUG("KOR backend returned detachable buffer fd: %d ", fd);
    return true;
}

}  // namespace zant::kor
