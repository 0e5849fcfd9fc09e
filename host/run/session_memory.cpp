// A session's shared memory: pools of external buffers, tensors, and buffers that contexts give up for a while.
#include <fmt/format.h>

#include <algorithm>

#include "run/session.h"

namespace runhost {

namespace {

constexpr const char* NO_SIMULATED_BACKEND = "the host has no contexts of its own with this backend";

bool holdsError(const CallReport& call) {
    return std::any_of(call.log.begin(), call.log.end(),
                       [](const LogLine& line) { return line.level == ZANT_LOG_LEVEL_ERROR; });
}

}  // namespace

// The hook answers false, without a word, as long as its pools wait for more contexts.
void Session::poolBuffers() {
    m_steps.stage("External buffers", "give all contexts shared working memory, and each its own for weights");
    if (m_memory == nullptr) return m_steps.skip("allocateExternalBuffers", NO_SIMULATED_BACKEND);
    const size_t total = m_contexts.size();
    const auto poolId = [&](const char* name) { return fmt::format("{}:{}", name, total); };
    for (size_t i = 0; i < total; ++i) {
        bool isFull = false;
        CallReport& call = m_steps.hook("allocateExternalBuffers", [&] {
            isFull = m_object->allocateExternalBuffers(m_contexts[i].handle, poolId("spill"), poolId("backup"),
                                                       poolId("weights"));
            return true;
        });
        call.note = fmt::format("{}: pools {}, {} and {} {}", m_contexts[i].name, poolId("spill"), poolId("backup"),
                                poolId("weights"), isFull ? "are full" : "wait for more contexts");
        if (isFull != (i + 1 == total) || holdsError(call)) m_steps.fail(call);
    }
    m_steps.hook("finalizeExternalBufferPools", [&] { return m_object->finalizeExternalBufferPools(); }).note =
        "the pools get their blocks";
}

void Session::allocateTensors() {
    m_steps.stage("Tensors", "take memory for the graphs' inputs and outputs");
    if (m_memory == nullptr) return m_steps.skip("getBufferAllocator", NO_SIMULATED_BACKEND);
    for (Context& context : m_contexts) allocateTensors(context);
}

void Session::allocateTensors(Context& context) {
    CallReport& call = m_steps.hook("getBufferAllocator", [&] {
        m_object->getBufferAllocator(context.allocator);
        return (context.allocator != nullptr) == m_facts.asksForSharedMemory;
    });
    if (context.allocator == nullptr) {
        call.note = "none: the host uses memory of its own";
        return;
    }
    call.note = context.name;
    GraphTensors::Allocator& allocator = *context.allocator;
    const size_t index = static_cast<size_t>(&context - m_contexts.data());
    m_steps.hook("initialize", [&] { return allocator.initialize(context.handle, m_backend.functions()) == 0; }).note =
        context.name;
    for (const Graph& graph : m_graphs) {
        if (graph.context != index) continue;
        GraphTensors tensors(graph.name);
        CallReport& allocate = m_steps.hook("allocate", [&] { return tensors.allocate(allocator); });
        allocate.note = fmt::format("{}: {}", graph.name, tensors.text());
        const bool allocated = allocate.outcome == Outcome::OK;
        // Tensors before one that failed have their memory all the same.
        context.tensors.push_back(std::move(tensors));
        if (!allocated) continue;
        m_steps.hostStep("exchange", [&] { return context.tensors.back().exchange(allocator, *m_memory); }).note =
            graph.name + ": the device reads the inputs, the host reads the output";
    }
}

void Session::releaseTensors() {
    const bool hasTensors = std::any_of(m_contexts.begin(), m_contexts.end(),
                                        [](const Context& context) { return !context.tensors.empty(); });
    if (hasTensors) m_steps.stage("Release the tensors", "each block goes with its last tensor");
    for (Context& context : m_contexts) {
        for (GraphTensors& tensors : context.tensors) {
            m_steps.hook("release", [&] { return tensors.release(*context.allocator); }).note = tensors.graph();
        }
        context.allocator.reset();
    }
}

void Session::detachAndAttach() {
    m_steps.timeLine().enter("Detach");
    bool isEnabled = false;
    CallReport& call = m_steps.hook("detachableBuffersEnabled", [&] {
        isEnabled = m_object->detachableBuffersEnabled();
        return true;
    });
    call.note = isEnabled ? "yes" : "no";
    if (!isEnabled) return m_steps.skip("detachBuffers", "the document's first context does not ask for it");
    if (m_memory == nullptr) return m_steps.skip("detachBuffers", NO_SIMULATED_BACKEND);
    for (Context& context : m_contexts) detachAndAttach(context);
}

// A context whose buffers did not come back runs no more.
void Session::detachAndAttach(Context& context) {
    DetachedTime time{context.name, 0, 0, 0, "between run 1 and run 2"};
    CallReport& detach = m_steps.hook("detachBuffers", [&] { return m_object->detachBuffers(context.handle); });
    const bool detached = detach.outcome == Outcome::OK;
    time.buffers = m_memory->detachedBuffers(context.handle);
    time.fromNs = m_backend.elapsedNs();
    detach.note = fmt::format("{}: {} detached", context.name, counted(time.buffers, "buffer"));
    CallReport& attach = m_steps.hook("attachBuffers", [&] { return m_object->attachBuffers(context.handle); });
    time.toNs = m_backend.elapsedNs();
    const uint32_t left = m_memory->detachedBuffers(context.handle);
    attach.note = fmt::format("{}: {} detached", context.name, counted(left, "buffer"));
    if (left > 0) m_steps.fail(attach);
    context.canRun = detached && attach.outcome == Outcome::OK;
    if (!context.canRun) m_steps.skip("executeGraph", context.name + " runs no more: its buffers are not all attached");
    if (time.buffers > 0) m_report.memory.detached.push_back(time);
}

void Session::takeMemoryMap() {
    if (m_memory == nullptr) return;
    m_report.memory.blocks = m_memory->blocks([&](const void* handle) {
        const auto context = std::find_if(m_contexts.begin(), m_contexts.end(),
                                          [&](const Context& candidate) { return candidate.handle == handle; });
        return context == m_contexts.end() ? std::string("another context") : context->name;
    });
}

}  // namespace runhost
