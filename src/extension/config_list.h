// Record, wrapper and list: how the hooks of graphs, runs and contexts build what they hand to the host.
#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "platform/logger.h"
#include "zelmar_kor/custom_configs.h"

namespace zant::kor {

// An array of pointers as the host reads it, together with the elements, which it owns. An element stays where it is
// until clear; the array itself may move as long as elements are appended. A null pointer stands behind the last one.
template <class Element>
class HostList {
public:
    HostList() = default;
    HostList(HostList&& other) noexcept : m_array(std::exchange(other.m_array, {})) {}
    HostList& operator=(HostList&&) = delete;
    ~HostList() { clear(); }

    // Throws std::bad_alloc with the list as it was.
    void append(const Element& element) {
        auto owned = std::make_unique<Element>(element);
        if (m_array.empty()) m_array.push_back(nullptr);
        m_array.push_back(nullptr);
        m_array[m_array.size() - 2] = owned.release();
    }
    // Null for an empty list.
    Element** data() noexcept { return size() == 0 ? nullptr : m_array.data(); }
    uint32_t size() const noexcept { return m_array.empty() ? 0 : static_cast<uint32_t>(m_array.size() - 1); }
    template <class Visit>
    void forEach(Visit visit) {
        for (uint32_t i = 0; i < size(); ++i) visit(*m_array[i]);
    }
    void clear() noexcept {
        for (const Element* element : m_array) delete element;
        m_array.clear();
    }

private:
    std::vector<Element*> m_array;
};

using ConfigList = HostList<ZantConfigWrapper>;

// Frees a graph record, and with it the name and the text that a finalize record has copies of.
struct GraphRecordDeleter {
    void operator()(KORGraphCustomConfig* record) const noexcept;
};
using GraphRecord = std::unique_ptr<KORGraphCustomConfig, GraphRecordDeleter>;

// Throws std::bad_alloc.
GraphRecord makeGraphRecord(const KORGraphCustomConfig& values);

// Gives build's result, or false where memory is short: the line then is message with the exception's text.
template <class Build>
bool tellingShortage(const char* message, Build&& build) {
    try {
        return std::forward<Build>(build)();
    } catch (const std::bad_alloc& error) {
        ZANT_LOG_ERROR(message, error.what());
        return false;
    }
}

// Keeps the record in records and appends its wrapper to list. Throws std::bad_alloc with the record freed when it
// cannot be kept. False when the wrapper fails, told by wrapperMessage: the record is kept, the list lacks it.
template <class Owner>
bool appendRecord(std::vector<Owner>& records, ConfigList& list, Owner record, const char* wrapperMessage) {
    void* address = record.get();
    records.push_back(std::move(record));
    return tellingShortage(wrapperMessage, [&] {
        list.append({ZANT_CONFIG_OPTION_CUSTOM, 0, address});
        return true;
    });
}

}  // namespace zant::kor
