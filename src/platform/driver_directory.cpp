#include "platform/driver_directory.h"

#include <string_view>
#include <vector>

#include "platform/system.h"

namespace zant::system {

namespace {

constexpr const wchar_t* KOR_DRIVER_SERVICE = L"cvkordrv";
constexpr const wchar_t* DARLINK_SERVICE = L"cvdarlink";
constexpr std::wstring_view SYSTEM_ROOT = L"\\SystemRoot";
constexpr const char* KOR_DRIVER_ENUM_KEY = "SYSTEM\\CurrentControlSet\\Services\\cvkordrv\\Enum";
constexpr const char* FIRST_INSTANCE = "0";
constexpr const char* ENUM_KEY = "SYSTEM\\CurrentControlSet\\Enum\\";
constexpr const char* DEVICE_INFO_KEY = "\\Device Parameters\\KORM\\INFO";
constexpr const char* DARLINK_VALUE = "DarlinkEnabledDSPInfo";
constexpr uint8_t DARLINK_ON_KOR_DRIVER = 8;
constexpr uint32_t LONGEST_REGISTRY_STRING = 256;

// The instance path of the NPU driver's first device, empty if there is none.
std::string korDeviceInstance() {
    RegistryKey key;
    uint32_t size = 0;
    if (key.open(RegistryRoot::localMachine, KOR_DRIVER_ENUM_KEY) != REGISTRY_OK ||
        key.read(FIRST_INSTANCE, RegistryType::text, nullptr, size) != REGISTRY_OK) {
        return "";
    }
    std::vector<char> buffer(size_t{size} + 1);
    if (key.read(FIRST_INSTANCE, RegistryType::text, buffer.data(), size) != REGISTRY_OK) return "";
    return buffer.data();
}

}  // namespace

std::string getDriverDirectory() {
    static const std::string directory = findDriverDirectory();
    return directory;
}

std::string findDriverDirectory() {
    std::string directory = getServiceDirectory(KOR_DRIVER_SERVICE);
    if (!directory.empty() && isDarlinkEnabledOnKorDriver()) return directory;
    return getServiceDirectory(DARLINK_SERVICE);
}

std::string getServiceDirectory(const std::wstring& serviceName) {
    std::optional<std::wstring> path = serviceBinaryPath(serviceName.c_str());
    if (!path) return "";
    const size_t separator = path->rfind(L'\\');
    if (separator != std::wstring::npos) path->resize(separator);
    if (!path->starts_with(SYSTEM_ROOT)) return "";
    const std::optional<std::wstring> windows = environmentVariable(L"windir");
    if (!windows) return "";
    return narrow(path->replace(0, SYSTEM_ROOT.size(), *windows));
}

bool isDarlinkEnabledOnKorDriver() {
    const std::string instance = korDeviceInstance();
    if (instance.empty()) return false;
    RegistryKey key;
    if (key.open(RegistryRoot::localMachine, (ENUM_KEY + instance + DEVICE_INFO_KEY).c_str()) != REGISTRY_OK) {
        return false;
    }
    uint32_t size = 0;
    uint8_t value = 0;
    return key.read(DARLINK_VALUE, RegistryType::binary, nullptr, size) == REGISTRY_OK && size == sizeof(value) &&
           key.read(DARLINK_VALUE, RegistryType::binary, &value, size) == REGISTRY_OK && value == DARLINK_ON_KOR_DRIVER;
}

std::string joinPath(const std::string& directory, const std::string& fileName) {
    const bool needsSlash = !directory.empty() && directory.back() != '/' && directory.back() != '\\';
    return directory + (needsSlash ? "/" : "") + fileName;
}

RegistryString readRegistryString(const char* keyPath, const char* valueName) {
    // One byte more than is read: a value that was stored without its end has one here.
    static char text[LONGEST_REGISTRY_STRING + 1];
    RegistryKey key;
    if (const uint32_t status = key.open(RegistryRoot::currentUser, keyPath); status != REGISTRY_OK) {
        return {status, "Failed to open registry key."};
    }
    uint32_t size = LONGEST_REGISTRY_STRING;
    if (const uint32_t status = key.read(valueName, RegistryType::any, text, size); status != REGISTRY_OK) {
        return {status, "Failed to query registry value."};
    }
    text[size] = '\0';
    return {REGISTRY_OK, text};
}

}  // namespace zant::system
