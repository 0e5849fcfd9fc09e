// The service control manager and the registry of this Windows, or of a wine prefix.
#include <windows.h>

#include <rapidjson/document.h>

#include <memory>
#include <type_traits>

#include "support/machine.h"

namespace zant::test {

namespace {

using Service = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, decltype(&CloseServiceHandle)>;

// Held for good: with a connection for each call, wine's service control manager loses one now and then.
SC_HANDLE manager() {
    static const Service manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE), CloseServiceHandle);
    return manager.get();
}

void deleteService(const std::string& name) {
    const Service service(OpenServiceA(manager(), name.c_str(), DELETE), CloseServiceHandle);
    if (service != nullptr) DeleteService(service.get());
}

bool createService(const std::string& name, const char* binary) {
    const Service service(
        CreateServiceA(manager(), name.c_str(), nullptr, SERVICE_ALL_ACCESS, SERVICE_KERNEL_DRIVER,
                       SERVICE_DEMAND_START, SERVICE_ERROR_IGNORE, binary, nullptr, nullptr, nullptr, nullptr, nullptr),
        CloseServiceHandle);
    return service != nullptr;
}

HKEY rootOf(const std::string& name) {
    return name == "HKLM" ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

// A value that is neither a text nor an array of bytes is left out.
bool setValue(HKEY key, const char* name, const rapidjson::Value& value) {
    std::string bytes;
    if (value.IsString()) bytes.assign(value.GetString(), value.GetStringLength() + 1);
    if (value.IsArray()) {
        for (const rapidjson::Value& byte : value.GetArray()) {
            if (byte.GetUint() > 0xFF) return true;
            bytes.push_back(static_cast<char>(byte.GetUint()));
        }
    }
    if (!value.IsString() && !value.IsArray()) return true;
    const DWORD type = value.IsString() ? REG_SZ : REG_BINARY;
    return RegSetValueExA(key, name, 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                          static_cast<DWORD>(bytes.size())) == ERROR_SUCCESS;
}

bool createKey(HKEY root, const char* path, const rapidjson::Value& values) {
    HKEY key = nullptr;
    if (RegCreateKeyExA(root, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) != ERROR_SUCCESS) {
        return false;
    }
    bool done = true;
    for (const auto& [name, value] : values.GetObject()) done = setValue(key, name.GetString(), value) && done;
    RegCloseKey(key);
    return done;
}

}  // namespace

Machine::Machine() : m_root("ZELMAR_PLATFORM_ROOT", nullptr) {}

Machine::~Machine() {
    become("{}");
}

bool Machine::become(const std::string& platform) {
    for (const std::string& path : m_keys) RegDeleteTreeA(rootOf(path.substr(0, 4)), path.c_str() + 5);
    for (const std::string& name : m_services) deleteService(name);
    m_keys.clear();
    m_services.clear();
    rapidjson::Document wanted;
    wanted.Parse<rapidjson::kParseIterativeFlag>(platform.c_str());
    if (!wanted.IsObject()) return true;  // no machine at all
    bool done = manager() != nullptr;
    if (done && wanted.HasMember("services")) {
        for (const auto& [name, service] : wanted["services"].GetObject()) {
            m_services.emplace_back(name.GetString());
            done = createService(name.GetString(), service["binaryPathName"].GetString()) && done;
        }
    }
    if (done && wanted.HasMember("registry")) {
        for (const auto& [root, keys] : wanted["registry"].GetObject()) {
            for (const auto& [path, values] : keys.GetObject()) {
                m_keys.push_back(std::string(root.GetString()) + "\\" + path.GetString());
                done = createKey(rootOf(root.GetString()), path.GetString(), values) && done;
            }
        }
    }
    return done;
}

}  // namespace zant::test
