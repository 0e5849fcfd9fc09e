// Where the drivers of the NPU keep their libraries, read from the service control manager and the registry. Nothing
// here logs: what cannot be found is empty.
#pragma once

#include <cstdint>
#include <string>

namespace zant::system {

// The directory of the RPC client library in UTF-8, without a separator at its end; empty when it is not known. Found
// at the first call and kept for the life of the library. Any thread.
std::string getDriverDirectory();

// What the first call of getDriverDirectory finds: the NPU driver's directory when its device carries the RPC
// framework, else the RPC driver's.
std::string findDriverDirectory();

// The directory of a kernel service's executable, with "windir" in the place of "\SystemRoot". Empty unless the path
// begins with that.
std::string getServiceDirectory(const std::wstring& serviceName);

// Whether the NPU driver's device says that it carries the RPC framework.
bool isDarlinkEnabledOnKorDriver();

// directory and fileName with one slash between them; the bare fileName for an empty directory.
std::string joinPath(const std::string& directory, const std::string& fileName);

struct RegistryString {
    uint32_t status;   // 0, or the system's error code
    const char* text;  // the value, valid until the next call; or what failed
};

// A text of at most 256 bytes under HKEY_CURRENT_USER. One thread at a time.
RegistryString readRegistryString(const char* keyPath, const char* valueName);

}  // namespace zant::system
