// The trace event of the standard output sink: a self-describing event of a provider of the library's own.
#include <windows.h>

#include <evntprov.h>

#include <array>
#include <atomic>
#include <cstring>

#include "platform/system.h"

namespace zant::system {

namespace {

// {6F1E3B52-9C0D-4A7E-8B55-2D41C7A90E13}: who listens signs on to this one.
constexpr GUID PROVIDER = {0x6F1E3B52, 0x9C0D, 0x4A7E, {0x8B, 0x55, 0x2D, 0x41, 0xC7, 0xA9, 0x0E, 0x13}};

constexpr UCHAR TRACE_LOGGING_CHANNEL = 11;
constexpr UCHAR EVENT_LEVEL = 5;
constexpr uint32_t EVERY_LEVEL = 256;
constexpr EVENT_DESCRIPTOR EVENT{0, 0, TRACE_LOGGING_CHANNEL, EVENT_LEVEL, 0, 0, 0};

// What a data descriptor's reserved word says of its bytes.
constexpr ULONG EVENT_METADATA = 1;
constexpr ULONG PROVIDER_METADATA = 2;

// Names with their ends, behind the size of the whole, its own two bytes included.
constexpr char PROVIDER_NAMES[] = "\x1B\0ZANTTraceLoggingProvider";
// The same with tags (none) in front and, last, the type of the one field: 2, a zero-terminated ANSI string.
constexpr char EVENT_NAMES[] = "\x15\0\0ZANT\0TestMessage\0\x02";
static_assert(sizeof(PROVIDER_NAMES) == 0x1B);
static_assert(sizeof(EVENT_NAMES) - 1 == 0x15);

EVENT_DATA_DESCRIPTOR describe(const void* bytes, size_t size, ULONG kind) {
    EVENT_DATA_DESCRIPTOR descriptor{};
    descriptor.Ptr = reinterpret_cast<uintptr_t>(bytes);
    descriptor.Size = static_cast<ULONG>(size);
    descriptor.Reserved = kind;
    return descriptor;
}

// The greatest level that somebody listens to and one more; 0 while nobody does.
std::atomic<uint32_t> g_enable{0};

// What the system says of a listener; not every toolchain's headers name it. 2 asks for a state that there is none of.
constexpr ULONG LISTENER_GONE = 0;
constexpr ULONG LISTENER_CAME = 1;

void NTAPI noteListener(LPCGUID, ULONG change, UCHAR level, ULONGLONG, ULONGLONG, PEVENT_FILTER_DESCRIPTOR, PVOID) {
    if (change == LISTENER_CAME) g_enable.store(level == 0 ? EVERY_LEVEL : uint32_t{level} + 1);
    if (change == LISTENER_GONE) g_enable.store(0);
}

// Registered from the first event to the unloading of the library, which the system would else call into.
class Provider {
public:
    Provider() noexcept {
        if (EventRegister(&PROVIDER, noteListener, nullptr, &m_handle) != ERROR_SUCCESS) m_handle = 0;
    }
    ~Provider() {
        g_enable.store(0);
        if (m_handle != 0) EventUnregister(m_handle);
    }
    Provider(const Provider&) = delete;
    Provider& operator=(const Provider&) = delete;

    void write(const char* text) const noexcept {
        std::array<EVENT_DATA_DESCRIPTOR, 3> data{describe(PROVIDER_NAMES, sizeof(PROVIDER_NAMES), PROVIDER_METADATA),
                                                  describe(EVENT_NAMES, sizeof(EVENT_NAMES) - 1, EVENT_METADATA),
                                                  describe(text, std::strlen(text) + 1, 0)};
        EventWriteTransfer(m_handle, &EVENT, nullptr, nullptr, static_cast<ULONG>(data.size()), data.data());
    }

private:
    REGHANDLE m_handle = 0;
};

}  // namespace

void writeTraceEvent(const char* text) noexcept {
    static const Provider provider;
    if (g_enable.load(std::memory_order_relaxed) > EVENT_LEVEL) provider.write(text);
}

}  // namespace zant::system
