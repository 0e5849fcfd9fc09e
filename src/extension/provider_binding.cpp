// Finding this backend's provider, and the one call that a hook makes to the backend's device.
#include <algorithm>

#include "extension/kor_backend.h"
#include "platform/dynamic_loader.h"
#include "platform/exception_guard.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr uint32_t REQUIRED_BACKEND_MAJOR = 5;
constexpr uint32_t MINIMUM_BACKEND_MINOR = 51;

const ZantProviderRecord* findKorProvider(const ZantProviderRecord* const* providers, uint32_t count) {
    if (providers == nullptr) return nullptr;
    const auto* end = providers + count;
    const auto* found = std::find_if(providers, end, [](const ZantProviderRecord* provider) {
        return provider != nullptr && provider->backendId == ZANT_BACKEND_ID_KOR;
    });
    return found == end ? nullptr : *found;
}

bool isSupportedVersion(const ZantProviderRecord& provider) {
    ZantApiVersion version{};
    // A backend without the operation has no version that could be right.
    if (provider.getApiVersion != nullptr) provider.getApiVersion(&version);
    return version.backend.major == REQUIRED_BACKEND_MAJOR && version.backend.minor >= MINIMUM_BACKEND_MINOR;
}

}  // namespace

bool KORBackend::bindBackendLibrary(void* library) {
    return guarded("bindBackendLibrary", false, [&] {
        if (library == nullptr) {
            ZANT_LOG_ERROR("backend handle is nullptr");
            return false;
        }
        void* symbol = loader::dlSym(library, "ZantInterface_getProviders");
        if (symbol == nullptr) {
            ZANT_LOG_ERROR("Unable to find symbols. dlerror(): %s", loader::dlError());
            return false;
        }
        return bindInterfaceProviders(reinterpret_cast<ZantInterfaceGetProviders>(symbol));
    });
}

bool KORBackend::bindInterfaceProviders(ZantInterfaceGetProviders getProviders) {
    return guarded("bindInterfaceProviders", false, [&] {
        if (getProviders == nullptr) {
            ZANT_LOG_ERROR("getProviders function is nullptr");
            return false;
        }
        const ZantProviderRecord** providers = nullptr;
        uint32_t count = 0;
        getProviders(&providers, &count);
        const ZantProviderRecord* provider = findKorProvider(providers, count);
        if (provider == nullptr) {
            ZANT_LOG_ERROR("Unable to find KOR interface provider.");
            return false;
        }
        m_interface = *provider;
        if (!isSupportedVersion(m_interface)) {
            ZANT_LOG_ERROR(
                "Backend version mismatch. Please use version of backend that matchescurrent backend API Definition "
                "version.");
            return false;
        }
        return true;
    });
}

bool KORBackend::enableKorExtension(void* device) {
    return guarded("enableKorExtension", false, [&] {
        const auto found = std::find_if(m_deviceConfigs.begin(), m_deviceConfigs.end(),
                                        [](const KORDeviceConfig& config) { return config.enableKorExtension; });
        if (found == m_deviceConfigs.end()) return false;
        if (m_interface.deviceSetConfig == nullptr) {
            ZANT_LOG_ERROR("ZantDevice_setConfig is not provided by the bound backend");
            return false;
        }
        ExtensionConfig& extension = m_extensionConfig;
        extension.extensionSwitch.option = KOR_DEVICE_EXTENSION_SWITCH;
        extension.extensionSwitch.enableKorExtension = found->enableKorExtension ? 1 : 0;
        extension.extensionSwitch.consolidateKorExtension = found->consolidateKorExtension ? 1 : 0;
        extension.option.option = KOR_DEVICE_EXTENSION_OPTION;
        extension.option.extensionSwitch = &extension.extensionSwitch;
        extension.wrapper.option = ZANT_CONFIG_OPTION_CUSTOM;
        extension.wrapper.customConfig = &extension.option;
        const ZantConfigWrapper* configs[] = {&extension.wrapper, nullptr};
        const uint64_t status = m_interface.deviceSetConfig(device, configs);
        if (status != 0) {
            ZANT_LOG_ERROR("ZantDevice_setConfig(enableKorExtension) failed: 0x%x", static_cast<unsigned>(status));
            return false;
        }
        return true;
    });
}

}  // namespace zant::kor
