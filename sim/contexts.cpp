#include "contexts.h"

#include <algorithm>
#include <utility>

#include "decode.h"

namespace zant::sim {

namespace {

constexpr uint64_t OWN_BUFFER_SIZE = 8192;

std::string unknown(const void* context) {
    return describeHandle(context) + " was never made or is freed";
}

// Different for each context, so that the largest of a pool is one context's alone.
ZantSimContextBuffers usualBuffers(uint64_t number) {
    return {number * 65536, number * 131072, number * 16384, static_cast<uint32_t>(1 + number % 2)};
}

}  // namespace

ZantSimContextBuffers Contexts::nextBuffers() {
    const size_t index = m_made++;
    return index < m_next.size() ? m_next[index] : usualBuffers(index + 1);
}

void* Contexts::create(bool fromBinary, bool detachable) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Context context{fromBinary, nextBuffers(), {}};
    for (uint32_t i = 0; detachable && i < context.buffers.detachableCount; ++i) {
        context.own.push_back({SharedMemory(OWN_BUFFER_SIZE), KOR_BUFFER_ATTACHED, KOR_BUFFER_ATTACHED});
    }
    void* handle = makeHandle(HandleKind::CONTEXT);
    m_contexts.emplace(handle, std::move(context));
    return handle;
}

std::string Contexts::free(const void* context) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_contexts.erase(context) == 0) return unknown(context);
    std::erase_if(m_graphs, [&](const auto& item) { return item.second == context; });
    return {};
}

std::string Contexts::checkAlive(const void* context) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_contexts.contains(context) ? "" : unknown(context);
}

std::string Contexts::addGraph(const void* context, bool retrieved, void*& graph) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_contexts.find(context);
    if (found == m_contexts.end()) return unknown(context);
    if (found->second.fromBinary != retrieved) {
        return describeHandle(context) + (retrieved ? " was made without a binary" : " was made from a binary");
    }
    graph = makeHandle(HandleKind::GRAPH);
    m_graphs.emplace(graph, context);
    return {};
}

const void* Contexts::contextOf(const void* graph) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_graphs.find(graph);
    return found == m_graphs.end() ? nullptr : found->second;
}

int64_t Contexts::detachableAnswer(const Context& context) const {
    return m_detachableAnswer.value_or(static_cast<int64_t>(context.own.size()));
}

std::string Contexts::number(const void* context, ZantContextProperty option, int64_t& answer) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_contexts.find(context);
    if (found == m_contexts.end()) return unknown(context);
    const ZantSimContextBuffers& buffers = found->second.buffers;
    switch (option) {
        case ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE:
            answer = static_cast<int64_t>(buffers.spillFillSize);
            return {};
        case ZANT_CONTEXT_PROPERTY_WEIGHTS_SIZE:
            answer = static_cast<int64_t>(buffers.weightsSize);
            return {};
        case ZANT_CONTEXT_PROPERTY_SPAD_BACKUP_SIZE:
            answer = static_cast<int64_t>(buffers.spadBackupSize);
            return {};
        case ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT:
            answer = detachableAnswer(found->second);
            return {};
        default:
            return "unknown property " + std::to_string(option);
    }
}

std::string Contexts::descriptors(const void* context, std::vector<int32_t>& list) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_contexts.find(context);
    if (found == m_contexts.end()) return unknown(context);
    const int64_t told = detachableAnswer(found->second);
    for (const OwnBuffer& buffer : found->second.own) {
        if (static_cast<int64_t>(list.size()) < told) list.push_back(buffer.memory.descriptor());
    }
    return {};
}

std::string Contexts::want(const void* context, const std::vector<ContextBufferStateRecord>& records) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_contexts.find(context);
    if (found == m_contexts.end()) return unknown(context);
    const auto bufferOf = [&](const ContextBufferStateRecord& record) {
        return std::find_if(found->second.own.begin(), found->second.own.end(), [&](const OwnBuffer& buffer) {
            return buffer.memory.descriptor() == record.fileDescriptor;
        });
    };
    for (const ContextBufferStateRecord& record : records) {
        if (bufferOf(record) != found->second.own.end()) continue;
        return "descriptor " + std::to_string(record.fileDescriptor) + " is no detachable buffer of " +
               describeHandle(context);
    }
    for (const ContextBufferStateRecord& record : records) bufferOf(record)->wanted = record.wantedState;
    return {};
}

std::string Contexts::finalize(const void* context) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_contexts.find(context);
    if (found == m_contexts.end()) return unknown(context);
    for (OwnBuffer& buffer : found->second.own) buffer.state = buffer.wanted;
    return {};
}

std::string Contexts::checkAttached(const void* context) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_contexts.find(context);
    if (found == m_contexts.end()) return unknown(context);
    for (const OwnBuffer& buffer : found->second.own) {
        if (buffer.state != buffer.wanted) return describeHandle(context) + " has changed buffers and no finalise";
        if (buffer.state == KOR_BUFFER_DETACHED) return describeHandle(context) + " has detached buffers";
    }
    return {};
}

uint32_t Contexts::detachedCount(const void* context) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_contexts.find(context);
    if (found == m_contexts.end()) return 0;
    const auto isDetached = [](const OwnBuffer& buffer) { return buffer.state == KOR_BUFFER_DETACHED; };
    return static_cast<uint32_t>(std::count_if(found->second.own.begin(), found->second.own.end(), isDetached));
}

void Contexts::setNext(std::vector<ZantSimContextBuffers> buffers) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_next = std::move(buffers);
    m_made = 0;
}

void Contexts::setDetachableAnswer(std::optional<int64_t> answer) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_detachableAnswer = answer;
}

Contexts& contexts() {
    static Contexts instance;
    return instance;
}

}  // namespace zant::sim

void ZantSim_setContextBuffers(const ZantSimContextBuffers* list, size_t count) {
    zant::sim::contexts().setNext(list == nullptr ? std::vector<ZantSimContextBuffers>()
                                                  : std::vector<ZantSimContextBuffers>(list, list + count));
}

void ZantSim_setDetachableAnswer(int64_t answer) {
    zant::sim::contexts().setDetachableAnswer(answer);
}

uint32_t ZantSim_detachedBuffers(const void* context) {
    return zant::sim::contexts().detachedCount(context);
}
