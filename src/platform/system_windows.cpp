// The system's operations on Windows. Narrow names and paths are taken as UTF-8 where they are valid UTF-8, and in the
// process's code page otherwise; what is given back is UTF-8. Registry names and texts keep the code page.
#include <windows.h>
// Behind windows.h, which they build on.
#include <fcntl.h>
#include <io.h>
#include <psapi.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

#include "platform/system.h"

// MinGW-w64's headers know it from version 11 on.
extern "C" WINBASEAPI HRESULT WINAPI SetThreadDescription(HANDLE thread, PCWSTR description);

namespace zant::system {

namespace {

// The text in UTF-16, empty if it has no such form.
std::wstring widen(const char* text, UINT codePage, DWORD flags) {
    const int length = MultiByteToWideChar(codePage, flags, text, -1, nullptr, 0);
    if (length <= 0) return {};
    std::wstring wide(static_cast<size_t>(length), L'\0');
    MultiByteToWideChar(codePage, flags, text, -1, wide.data(), length);
    wide.pop_back();  // the end, which was counted
    return wide;
}

std::wstring widen(const char* text) {
    std::wstring wide = widen(text, CP_UTF8, MB_ERR_INVALID_CHARS);
    return wide.empty() ? widen(text, CP_ACP, 0) : wide;
}

// Closed by CloseHandle.
class OwnedHandle {
public:
    explicit OwnedHandle(HANDLE handle) noexcept : m_handle(handle) {}
    ~OwnedHandle() {
        if (isOpen()) CloseHandle(m_handle);
    }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;

    bool isOpen() const noexcept { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const noexcept { return m_handle; }
    HANDLE release() noexcept { return std::exchange(m_handle, INVALID_HANDLE_VALUE); }

private:
    HANDLE m_handle;
};

// Closed by CloseServiceHandle.
class ServiceHandle {
public:
    explicit ServiceHandle(SC_HANDLE handle) noexcept : m_handle(handle) {}
    ~ServiceHandle() {
        if (m_handle != nullptr) CloseServiceHandle(m_handle);
    }
    ServiceHandle(const ServiceHandle&) = delete;
    ServiceHandle& operator=(const ServiceHandle&) = delete;

    SC_HANDLE get() const noexcept { return m_handle; }

private:
    SC_HANDLE m_handle;
};

// Others may read, write, rename and delete the file meanwhile, and no child process inherits it. A pipe's server does
// not get to act as this process.
HANDLE openShared(const std::wstring& path, DWORD access, DWORD disposition) {
    constexpr DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    constexpr DWORD flags = FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS;
    return CreateFileW(path.c_str(), access, share, nullptr, disposition, flags, nullptr);
}

// A folder does not open as a file; of what does, consoles, pipes and volumes are none.
bool isRegularFile(HANDLE file, LARGE_INTEGER& size) noexcept {
    BY_HANDLE_FILE_INFORMATION information{};
    return GetFileType(file) == FILE_TYPE_DISK && GetFileInformationByHandle(file, &information) != 0 &&
           GetFileSizeEx(file, &size) != 0;
}

// Reads until size bytes or the file's end; false on an error.
bool readUpTo(HANDLE file, char* buffer, size_t size, size_t& count) noexcept {
    constexpr size_t largestRead = size_t{1} << 30;
    count = 0;
    while (count < size) {
        DWORD got = 0;
        const auto wanted = static_cast<DWORD>(std::min(size - count, largestRead));
        if (ReadFile(file, buffer + count, wanted, &got, nullptr) == 0) return false;
        if (got == 0) break;
        count += got;
    }
    return true;
}

// A descriptor above 0 of the runtime library's, which closes the file from then on; -1 on failure, with errno set.
int descriptorOf(OwnedHandle& file, int access) noexcept {
    const int flags = access | _O_BINARY | _O_NOINHERIT;
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(file.get()), flags);
    if (descriptor < 0) return -1;
    file.release();
    if (descriptor > 0) return descriptor;
    // A process that closed its standard input: 0 would read as no descriptor.
    HANDLE copy = INVALID_HANDLE_VALUE;
    HANDLE const self = GetCurrentProcess();
    HANDLE const original = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    const BOOL copied = DuplicateHandle(self, original, self, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
    OwnedHandle second(copied != 0 ? copy : INVALID_HANDLE_VALUE);
    const int above = second.isOpen() ? _open_osfhandle(reinterpret_cast<intptr_t>(second.get()), flags) : -1;
    if (above > 0) second.release();
    _close(descriptor);
    if (above < 0) errno = EMFILE;
    return above;
}

std::string systemErrorText(DWORD code) {
    wchar_t text[512];
    constexpr DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    const DWORD length = FormatMessageW(flags, nullptr, code, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    std::wstring message(text, length);
    while (!message.empty() && message.back() == L' ') message.pop_back();
    return message.empty() ? "error " + std::to_string(code) : narrow(message);
}

}  // namespace

void* mainModule() noexcept {
    return GetModuleHandleW(nullptr);
}

void* loadModule(const char* path) noexcept {
    try {
        std::wstring wide = widen(path);
        // The loader looks for a full path's directory by backslashes alone.
        std::replace(wide.begin(), wide.end(), L'/', L'\\');
        return LoadLibraryExW(wide.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* findLoadedModule(const char* name) noexcept {
    try {
        std::wstring wide = widen(name);
        std::replace(wide.begin(), wide.end(), L'/', L'\\');
        return GetModuleHandleW(wide.c_str());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

bool unloadModule(void* module) noexcept {
    // An address that is no module's, or whose module is gone, must not reach the loader.
    HMODULE owner = nullptr;
    constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (GetModuleHandleExW(flags, static_cast<LPCWSTR>(module), &owner) == 0 || owner != module) return false;
    return FreeLibrary(owner) != 0;
}

void* resolveSymbol(void* module, const char* name) noexcept {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

std::optional<size_t> countModules() noexcept {
    DWORD bytes = 0;
    if (K32EnumProcessModules(GetCurrentProcess(), nullptr, 0, &bytes) == 0) return std::nullopt;
    return bytes / sizeof(HMODULE);
}

std::optional<size_t> listModules(void** modules, size_t capacity) noexcept {
    static_assert(sizeof(HMODULE) == sizeof(void*));
    DWORD bytes = 0;
    const auto room = static_cast<DWORD>(std::min<size_t>(capacity * sizeof(HMODULE), MAXDWORD));
    if (K32EnumProcessModules(GetCurrentProcess(), reinterpret_cast<HMODULE*>(modules), room, &bytes) == 0) {
        return std::nullopt;
    }
    return std::min(capacity, bytes / sizeof(HMODULE));  // bytes is what all of them would take
}

bool moduleFileOfAddress(const void* address, std::string& path) {
    HMODULE module = nullptr;
    constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (GetModuleHandleExW(flags, static_cast<LPCWSTR>(address), &module) == 0 || module == nullptr) return false;
    wchar_t name[MAX_PATH];
    const DWORD length = GetModuleFileNameW(module, name, MAX_PATH);
    // A name that fills the buffer is a cut one, which counts as none.
    path = length > 0 && length < MAX_PATH ? narrow(std::wstring(name, length)) : "";
    return true;
}

ReadFileStatus readWholeFile(const char* path, size_t maxSize, FileContents& contents) noexcept {
    try {
        const OwnedHandle file(openShared(widen(path), GENERIC_READ, OPEN_EXISTING));
        LARGE_INTEGER fileSize{};
        if (!file.isOpen() || !isRegularFile(file.get(), fileSize)) return ReadFileStatus::cannotOpen;
        if (static_cast<uint64_t>(fileSize.QuadPart) > maxSize) return ReadFileStatus::noMemory;
        const auto size = static_cast<size_t>(fileSize.QuadPart);
        contents.text.reset(new char[size + 1]);
        if (!readUpTo(file.get(), contents.text.get(), size, contents.size)) return ReadFileStatus::cannotOpen;
        contents.text[contents.size] = '\0';
        return ReadFileStatus::ok;
    } catch (const std::bad_alloc&) {
        return ReadFileStatus::noMemory;
    }
}

int openForUpdate(const char* path, std::string& error) {
    OwnedHandle file(openShared(widen(path), GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS));
    LARGE_INTEGER size{};
    if (!file.isOpen()) {
        error = systemErrorText(GetLastError());
        return -1;
    }
    if (!isRegularFile(file.get(), size)) {
        error = "Not a regular file";
        return -1;
    }
    const int descriptor = descriptorOf(file, _O_RDWR);
    if (descriptor < 0) error = std::strerror(errno);
    return descriptor;
}

bool closeDescriptor(int descriptor, char (&error)[ERROR_TEXT_CAPACITY]) noexcept {
    if (_close(descriptor) == 0) return true;
    std::snprintf(error, sizeof(error), "%s", std::strerror(errno));
    return false;
}

bool ensureFile(const char* path) noexcept {
    try {
        const std::wstring wide = widen(path, CP_ACP, 0);
        return GetFileAttributesW(wide.c_str()) != INVALID_FILE_ATTRIBUTES ||
               OwnedHandle(openShared(wide, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS)).isOpen();
    } catch (const std::bad_alloc&) {
        return false;
    }
}

int openForAppend(const char* path) noexcept {
    try {
        OwnedHandle file(openShared(widen(path, CP_ACP, 0), GENERIC_WRITE, OPEN_ALWAYS));
        if (!file.isOpen() || GetFileType(file.get()) != FILE_TYPE_DISK) return -1;
        if (SetFilePointerEx(file.get(), LARGE_INTEGER{}, nullptr, FILE_END) == 0) return -1;
        return descriptorOf(file, _O_WRONLY);
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

bool writeAll(int descriptor, const char* text, size_t size) noexcept {
    while (size > 0) {
        const int written = _write(descriptor, text, static_cast<unsigned>(std::min<size_t>(size, INT_MAX)));
        if (written <= 0) return false;
        text += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

size_t readFirmwareTable(const char* name, void* buffer, size_t capacity) noexcept {
    constexpr DWORD provider = 0x41435049;  // 'ACPI'
    DWORD table = 0;
    if (std::strlen(name) != sizeof(table)) return 0;
    std::memcpy(&table, name, sizeof(table));
    return GetSystemFirmwareTable(provider, table, buffer, static_cast<DWORD>(std::min<size_t>(capacity, MAXDWORD)));
}

std::optional<std::wstring> serviceBinaryPath(const wchar_t* service) {
    const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, STANDARD_RIGHTS_READ));
    if (manager.get() == nullptr) return std::nullopt;
    const ServiceHandle opened(OpenServiceW(manager.get(), service, SERVICE_QUERY_CONFIG));
    if (opened.get() == nullptr) return std::nullopt;
    DWORD size = 0;
    if (QueryServiceConfigW(opened.get(), nullptr, 0, &size) == 0 && GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return std::nullopt;
    }
    const std::unique_ptr<std::byte[]> room(new std::byte[size]);  // aligned as any object is
    auto* config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(room.get());
    if (QueryServiceConfigW(opened.get(), config, size, &size) == 0) return std::nullopt;
    return config->lpBinaryPathName != nullptr ? std::wstring(config->lpBinaryPathName) : std::wstring();
}

std::optional<std::wstring> environmentVariable(const wchar_t* name) {
    const DWORD size = GetEnvironmentVariableW(name, nullptr, 0);
    if (size == 0) return std::nullopt;
    std::wstring value(size, L'\0');
    const DWORD length = GetEnvironmentVariableW(name, value.data(), size);
    if (length == 0 || length >= size) return std::nullopt;  // changed between the calls
    value.resize(length);
    return value;
}

std::string narrow(const std::wstring& text) {
    if (text.empty() || text.size() > INT_MAX) return {};
    const auto units = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), units, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

RegistryKey::~RegistryKey() {
    if (m_handle != nullptr) RegCloseKey(static_cast<HKEY>(m_handle));
}

uint32_t RegistryKey::open(RegistryRoot root, const char* path) noexcept {
    static_assert(REGISTRY_OK == ERROR_SUCCESS && REGISTRY_NOT_FOUND == ERROR_FILE_NOT_FOUND);
    static_assert(REGISTRY_NO_MEMORY == ERROR_NOT_ENOUGH_MEMORY && REGISTRY_MORE_DATA == ERROR_MORE_DATA);
    static_assert(REGISTRY_WRONG_TYPE == ERROR_UNSUPPORTED_TYPE);
    HKEY key = nullptr;
    HKEY const rootKey = root == RegistryRoot::localMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    const LSTATUS status = RegOpenKeyExA(rootKey, path, 0, KEY_READ, &key);
    if (status == ERROR_SUCCESS) m_handle = key;
    return static_cast<uint32_t>(status);
}

uint32_t RegistryKey::read(const char* value, RegistryType type, void* buffer, uint32_t& size) const noexcept {
    if (m_handle == nullptr) return REGISTRY_NOT_FOUND;
    const auto key = static_cast<HKEY>(m_handle);
    DWORD bytes = size;
    LSTATUS status = ERROR_SUCCESS;
    if (type == RegistryType::any) {
        status = RegQueryValueExA(key, value, nullptr, nullptr, static_cast<BYTE*>(buffer), &bytes);
    } else {
        const DWORD typeFlag = type == RegistryType::text ? RRF_RT_REG_SZ : RRF_RT_REG_BINARY;
        status = RegGetValueA(key, nullptr, value, typeFlag, nullptr, buffer, &bytes);
    }
    size = bytes;
    return static_cast<uint32_t>(status);
}

void setThreadName(const char* name) noexcept {
    wchar_t wide[64] = {};
    for (size_t i = 0; i + 1 < std::size(wide) && name[i] != '\0'; ++i) {
        wide[i] = static_cast<unsigned char>(name[i]);
    }
    SetThreadDescription(GetCurrentThread(), wide);
}

uint64_t wallClockNs() noexcept {
    constexpr uint64_t ticksFrom1601To1970 = 0x19DB1DED53E8000;
    FILETIME now{};
    GetSystemTimePreciseAsFileTime(&now);
    const uint64_t ticks = (uint64_t{now.dwHighDateTime} << 32U) | now.dwLowDateTime;
    return (ticks - ticksFrom1601To1970) * 100;
}

}  // namespace zant::system
