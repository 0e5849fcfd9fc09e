// The few operations that the library needs from an operating system, as plain functions. Nothing here logs.
// system_posix.cpp and machine_posix.cpp answer them on Linux; CMake chooses the files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace zant::system {

// --- Modules. Handles are the loader's own.

// The handle of the process's main module, null on failure.
void* mainModule() noexcept;
// Loads a library by path or bare name and takes a reference; null on failure.
void* loadModule(const char* path) noexcept;
// The handle of a library that is in the process already, without taking a reference; null if there is none.
void* findLoadedModule(const char* name) noexcept;
// Gives a reference back.
bool unloadModule(void* module) noexcept;
// The address of a symbol that this one module itself defines; null if it has none. module: one of listModules.
void* resolveSymbol(void* module, const char* name) noexcept;
// The process's modules in the loader's order; empty optional when they cannot be listed.
std::optional<size_t> countModules() noexcept;
// Fills in at most capacity handles; returns how many were written, or nothing on failure.
std::optional<size_t> listModules(void** modules, size_t capacity) noexcept;
// The absolute path of the module that holds an address, as it was when the module was loaded: false when no module
// does; an empty path when it has no name, or one of 260 characters and more.
bool moduleFileOfAddress(const void* address, std::string& path);

// --- Files.

enum class ReadFileStatus { ok, cannotOpen, noMemory };

struct FileContents {
    std::unique_ptr<char[]> text;  // size bytes and a terminating zero
    size_t size = 0;
};

// Reads a regular file whole. Anything else (a directory, a device, a pipe) cannot be opened, so that no read blocks.
// noMemory: the buffer for the size could not be had, or the size is over maxSize.
ReadFileStatus readWholeFile(const char* path, size_t maxSize, FileContents& contents) noexcept;

// Opens a file for reading and writing, for as long as the caller wants it, and makes it with permission bits 0644 if
// it is absent. Only a regular file opens, and no call blocks. Gives the descriptor, which is above 0 and
// which no child process inherits; -1 on failure, with the cause in error.
int openForUpdate(const char* path, std::string& error);
// False on failure, with the cause in error, zero-terminated; the descriptor is gone all the same.
constexpr size_t ERROR_TEXT_CAPACITY = 128;
bool closeDescriptor(int descriptor, char (&error)[ERROR_TEXT_CAPACITY]) noexcept;

// The paths of these two are texts of the registry: in the process's code page on Windows.
// True when something is at the path, which may have been made just now: an empty file of the user's alone.
bool ensureFile(const char* path) noexcept;
// Opens a file for writing behind its end as it is now, and makes it if it is absent. A file that has no such end does
// not open, and no call blocks. Others may read, write, rename and delete it meanwhile. The descriptor, -1 on failure.
int openForAppend(const char* path) noexcept;
// False when not all of it could be written.
bool writeAll(int descriptor, const char* text, size_t size) noexcept;

// --- Firmware.

// Reads an ACPI table by its four letters, header included. Gives its size, 0 for none; fills the buffer in only when
// the capacity holds the whole table. A null buffer with capacity 0 asks for the size.
size_t readFirmwareTable(const char* name, void* buffer, size_t capacity) noexcept;

// --- Services and environment.

// The command that a service starts, as its configuration has it; empty optional when there is no such service or it
// may not be read.
std::optional<std::wstring> serviceBinaryPath(const wchar_t* service);
// The value of an environment variable; empty optional when there is none or it is empty.
std::optional<std::wstring> environmentVariable(const wchar_t* name);
// To UTF-8; what has no such form becomes U+FFFD.
std::string narrow(const std::wstring& text);

// --- Registry. Nothing is written.

enum class RegistryRoot { localMachine, currentUser };
enum class RegistryType { any, text, binary };

constexpr uint32_t REGISTRY_OK = 0;
constexpr uint32_t REGISTRY_NOT_FOUND = 2;
constexpr uint32_t REGISTRY_NO_MEMORY = 8;
constexpr uint32_t REGISTRY_MORE_DATA = 234;
constexpr uint32_t REGISTRY_WRONG_TYPE = 1630;

// A key opened for reading. Calls give the system's error code, 0 for success.
class RegistryKey {
public:
    RegistryKey() = default;
    ~RegistryKey();
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    // Once for each object. path: parts joined by backslashes.
    uint32_t open(RegistryRoot root, const char* path) noexcept;
    // The bytes of a value. size: the capacity before, the value's size after, which a null buffer only asks for;
    // REGISTRY_MORE_DATA when the capacity does not hold it. A text that is asked for as such ends in a zero byte,
    // counted; one read as any is as it was stored.
    uint32_t read(const char* value, RegistryType type, void* buffer, uint32_t& size) const noexcept;

private:
    void* m_handle = nullptr;
};

// --- Threads.

// Names the calling thread for debuggers and profilers; a name that is too long for the system is cut.
void setThreadName(const char* name) noexcept;

// --- Tracing.

// Hands a text to the system's event tracing where somebody listens; nothing happens where there is none.
void writeTraceEvent(const char* text) noexcept;

// --- Clock.

// Wall clock in nanoseconds since 1970, in steps of 100.
uint64_t wallClockNs() noexcept;

}  // namespace zant::system
