#include "extension/context_entries.h"

#include <utility>

namespace zant::kor {

KORBufferState ContextEntries::ensure(void* context) {
    MutexLock lock(m_contextEntriesMutex);
    return m_contextEntries[context].detachState;
}

void ContextEntries::setName(void* context, std::string name) {
    MutexLock lock(m_contextEntriesMutex);
    m_contextEntries[context].name = std::move(name);
}

void ContextEntries::hold(const ExternalBuffers& buffers) {
    ExternalBuffers replaced;  // a last reference ends with the lock released
    MutexLock lock(m_contextEntriesMutex);
    ExternalBuffers& held = m_contextEntries[buffers.context].buffers;
    for (const auto kind : {&ExternalBuffers::spillFill, &ExternalBuffers::spadBackup, &ExternalBuffers::weights}) {
        if (buffers.*kind != nullptr) replaced.*kind = std::exchange(held.*kind, buffers.*kind);
    }
}

void ContextEntries::setState(void* context, KORBufferState state) {
    MutexLock lock(m_contextEntriesMutex);
    const auto entry = m_contextEntries.find(context);
    if (entry != m_contextEntries.end()) entry->second.detachState = state;
}

std::optional<KORBufferState> ContextEntries::find(void* context) const {
    MutexLock lock(m_contextEntriesMutex);
    const auto entry = m_contextEntries.find(context);
    if (entry == m_contextEntries.end()) return std::nullopt;
    return entry->second.detachState;
}

ExternalBuffers ContextEntries::takeBuffers(void* context) {
    MutexLock lock(m_contextEntriesMutex);
    const auto entry = m_contextEntries.find(context);
    if (entry == m_contextEntries.end()) return {};
    return std::exchange(entry->second.buffers, {});
}

bool ContextEntries::erase(void* context) {
    MutexLock lock(m_contextEntriesMutex);
    return m_contextEntries.erase(context) == 1;
}

}  // namespace zant::kor
