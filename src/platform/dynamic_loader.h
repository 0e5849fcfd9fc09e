// Five operations in the shape of the POSIX dlopen family, the same on every platform, with a notion of local
// modules that a default symbol search skips.
//
// The operations never throw and never log. A failure is a null handle, a null address, -1 or 0 with the calling
// thread's error text set. Calls may overlap on several threads, for the local set has a lock of its own; but a module
// that another thread loads or unloads meanwhile can blur which modules a DL_LOCAL call brought into the process.
#pragma once

#include <cstdint>
#include <string>

namespace zant::loader {

constexpr uint32_t DL_NOW = 1;     // load now, the only loading mode there is
constexpr uint32_t DL_LOCAL = 2;   // a module that this call really brought into the process becomes local
constexpr uint32_t DL_GLOBAL = 4;  // the module is local no more
constexpr uint32_t DL_NOLOAD = 8;  // look for a module that is already in the process

// Pseudo-handle of dlSym: search the whole process, local modules excepted.
inline void* const DL_DEFAULT = reinterpret_cast<void*>(uintptr_t{4});

// A null or empty filename means the process's main module.
void* dlOpen(const char* filename, uint32_t flags) noexcept;
void* dlSym(void* handle, const char* name) noexcept;
int dlClose(void* handle) noexcept;
// The thread's error text, a constant string and never null; reading it resets it to the empty string.
const char* dlError() noexcept;
// Fills path with the file of the module that holds address. 1 on success, 0 on failure with path empty.
int dlAddr(const void* address, std::string& path) noexcept;

}  // namespace zant::loader
