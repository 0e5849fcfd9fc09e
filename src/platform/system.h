// The few operations that the library needs from an operating system, as plain functions. Nothing here logs.
// system_posix.cpp answers them on Linux; CMake chooses the file.
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
// The address of a symbol that this one module itself defines; null if it has none.
void* resolveSymbol(void* module, const char* name) noexcept;
// The process's modules in the loader's order; empty optional when they cannot be listed.
std::optional<size_t> countModules() noexcept;
// Fills in at most capacity handles; returns how many were written, or nothing on failure.
std::optional<size_t> listModules(void** modules, size_t capacity) noexcept;
// The absolute path of the module that holds an address, as it was when the module was loaded: false when no module
// does; an empty path when it has no name.
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

// --- Firmware.

// Reads an ACPI table by its four letters, header included. Gives its size, 0 for none; fills the buffer in only when
// the capacity holds the whole table. A null buffer with capacity 0 asks for the size.
size_t readFirmwareTable(const char* name, void* buffer, size_t capacity) noexcept;

// --- Threads.

// Names the calling thread for debuggers and profilers; a name that is too long for the system is cut.
void setThreadName(const char* name) noexcept;

// --- Clock.

// Wall clock in nanoseconds since 1970, in steps of 100.
uint64_t wallClockNs() noexcept;

}  // namespace zant::system
