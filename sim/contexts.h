// The backend's contexts: which live, what each wants from outside, which of its own buffers are detached, and the
// graphs in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "shared_memory.h"
#include "zant_sim/sim_backend.h"

namespace zant::sim {

// All operations may be called from any thread. Those that return a text return what was wrong with the call, and then
// have done nothing; an empty text is success.
class Contexts {
public:
    // detachable: the context's config asks for detachable buffers.
    void* create(bool fromBinary, bool detachable);
    std::string free(const void* context);
    std::string checkAlive(const void* context) const;

    std::string addGraph(const void* context, bool retrieved, void*& graph);
    // The graph's context; null when there is no such graph.
    const void* contextOf(const void* graph) const;

    std::string number(const void* context, ZantContextProperty option, int64_t& answer) const;
    // As many descriptors as the context answers when it is asked for their number, and has.
    std::string descriptors(const void* context, std::vector<int32_t>& list) const;
    // What the records want counts from the next finalize on.
    std::string want(const void* context, const std::vector<ContextBufferStateRecord>& records);
    std::string finalize(const void* context);
    // Whether a graph of the context can run with its own buffers as they are.
    std::string checkAttached(const void* context) const;
    uint32_t detachedCount(const void* context) const;

    void setNext(std::vector<ZantSimContextBuffers> buffers);
    void setDetachableAnswer(std::optional<int64_t> answer);

private:
    struct OwnBuffer {
        SharedMemory memory;
        uint32_t state;
        uint32_t wanted;
    };
    struct Context {
        bool fromBinary;
        ZantSimContextBuffers buffers;
        std::vector<OwnBuffer> own;
    };

    ZantSimContextBuffers nextBuffers();
    int64_t detachableAnswer(const Context& context) const;

    mutable std::mutex m_mutex;
    std::map<const void*, Context> m_contexts;
    std::map<const void*, const void*> m_graphs;  // to their contexts
    std::vector<ZantSimContextBuffers> m_next;
    size_t m_made = 0;  // since setNext
    std::optional<int64_t> m_detachableAnswer;
};

// The contexts of this library.
Contexts& contexts();

}  // namespace zant::sim
