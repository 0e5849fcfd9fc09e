// What the library knows of each context that a hook has named.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>

#include "buffers/shared_buffer_pool.h"
#include "platform/mutex.h"
#include "zelmar_kor/memory_records.h"

namespace zant::kor {

// Any thread. Each call takes the lock for itself alone, and nothing is called with it held: what is read may be out
// of date when it is used.
class ContextEntries {
public:
    // Makes the entry of the context if there is none, and gives its state.
    KORBufferState ensure(void* context) EXCLUDES(m_contextEntriesMutex);
    void setName(void* context, std::string name) EXCLUDES(m_contextEntriesMutex);
    // Keeps references to those buffers that are there, instead of earlier ones of their kind.
    void hold(const ExternalBuffers& buffers) EXCLUDES(m_contextEntriesMutex);
    // Changes nothing where there is no entry: it went while the backend was asked.
    void setState(void* context, KORBufferState state) EXCLUDES(m_contextEntriesMutex);

    // The context's state, nothing without an entry.
    std::optional<KORBufferState> find(void* context) const EXCLUDES(m_contextEntriesMutex);
    // Takes the references out of the entry.
    ExternalBuffers takeBuffers(void* context) EXCLUDES(m_contextEntriesMutex);
    // Whether there was an entry.
    bool erase(void* context) EXCLUDES(m_contextEntriesMutex);

private:
    struct ContextEntry {
        KORBufferState detachState = KOR_BUFFER_ATTACHED;
        ExternalBuffers buffers;
        std::string name;  // the host's; nothing reads it
    };

    mutable Mutex m_contextEntriesMutex;
    std::unordered_map<void*, ContextEntry> m_contextEntries GUARDED_BY(m_contextEntriesMutex);
};

}  // namespace zant::kor
