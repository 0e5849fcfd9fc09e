// The walk that the sections devices, graphs and context share, and the rows of their chains of words.
//
// A section goes through all flat keys and takes those that hold its word. The key's index settles which record is
// in force, then a chain decides: the first row whose word the key holds acts.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "config/flat_keys.h"
#include "config/typed_access.h"
#include "platform/logger.h"

namespace zant::kor {

// A section's records and the one in force.
template <class Record>
class SectionRecords {
public:
    explicit SectionRecords(std::vector<Record>& records) : m_records(records) {}

    // Takes the index behind the section's word, or behind the first element when no element is that word. A rise
    // above the highest index so far appends one record, whatever the rise.
    void settle(const FlatKey& key, KeyElement section) {
        const IndexElement index = key.afterOrSecond(section);
        if (index.isDigits()) m_current = index.toIndex();
        if (m_current > m_highest) {
            m_highest = m_current;
            m_records.emplace_back();
        }
    }

    int32_t index() const noexcept { return m_current; }

    // A document whose items before this one gave no key has fewer records than indexes: that ends the load.
    Record& inForce() const {
        const auto index = static_cast<size_t>(m_current);
        if (index >= m_records.size()) throw std::out_of_range("invalid vector subscript");
        return m_records[index];
    }

private:
    std::vector<Record>& m_records;
    int32_t m_current = 0;
    int32_t m_highest = -1;
};

// One row of a chain. apply returns false to end the section with a false result; line is the format of what it
// logs at level 3 with the stored value, null where the action has lines of its own.
template <class Walk>
struct ChainRow {
    KeyWord word;
    bool (*apply)(Walk& walk, const FlatKey& key, const char* line);
    const char* line;
};

// Whether a printf format holds just this one conversion, such as "d" or "lu".
consteval bool hasConversion(std::string_view format, std::string_view conversion) {
    const size_t percent = format.find('%');
    if (percent == std::string_view::npos) return false;
    const std::string_view behind = format.substr(percent + 1);
    return behind.starts_with(conversion) && behind.find('%') == std::string_view::npos;
}

// A row whose action stores one value and logs it: the format has to hold the one conversion that the action's
// argument is cast to, or the row does not compile.
template <class Walk, class Action>
consteval ChainRow<Walk> row(KeyWord word, const char* line) {
    if (!hasConversion(line, Action::conversion)) throw "the line lacks the conversion of its value";
    return {word, &Action::template apply<Walk>, line};
}

// A row whose action has lines of its own, or none.
template <class Walk>
consteval ChainRow<Walk> row(KeyWord word, bool (*apply)(Walk&, const FlatKey&, const char*)) {
    return {word, apply, nullptr};
}

// The first row whose word the key holds, null for none.
template <class Rows>
auto firstHit(const Rows& rows, const FlatKey& key) -> decltype(rows.data()) {
    const KeyWordSet words = key.words();
    for (const auto& row : rows) {
        if (words.has(row.word)) return &row;
    }
    return nullptr;
}

inline const char* boolWord(bool value) {
    return value ? "true" : "false";
}

// How a value is read, and what its line prints: the conversion, and the argument cast to that conversion's type.
struct AsFlag {
    static constexpr std::string_view conversion = "d";
    static bool read(const FlatKey& key) { return getBool(key); }
    static int argument(bool value) { return static_cast<int>(value); }
};
struct AsWord {
    static constexpr std::string_view conversion = "s";
    static bool read(const FlatKey& key) { return getBool(key); }
    static const char* argument(bool value) { return boolWord(value); }
};
struct AsInteger {
    static constexpr std::string_view conversion = "d";
    static uint32_t read(const FlatKey& key) { return getUint32(key); }
    static int argument(uint32_t value) { return static_cast<int>(value); }
};
struct AsUnsigned {
    static constexpr std::string_view conversion = "u";
    static uint32_t read(const FlatKey& key) { return getUint32(key); }
    static unsigned argument(uint32_t value) { return static_cast<unsigned>(value); }
};
struct AsCutInteger {
    static constexpr std::string_view conversion = "d";
    static uint64_t read(const FlatKey& key) { return getUint64(key); }
    static int argument(uint64_t value) { return static_cast<int>(value); }
};
// The width of the platform's long decides what is seen of a large value.
struct AsLong {
    static constexpr std::string_view conversion = "lu";
    static uint64_t read(const FlatKey& key) { return getUint64(key); }
    static unsigned long argument(uint64_t value) { return static_cast<unsigned long>(value); }
};
struct AsText {
    static constexpr std::string_view conversion = "s";
    static std::string read(const FlatKey& key) { return getString(key); }
    static const char* argument(const std::string& value) { return value.c_str(); }
};

// The action of most rows: read the value, store it in the record in force, log it. In this order.
template <auto Field, class Kind>
struct Store {
    static constexpr std::string_view conversion = Kind::conversion;
    template <class Walk>
    static bool apply(Walk& walk, const FlatKey& key, const char* line) {
        auto value = Kind::read(key);
        auto& field = walk.inForce().*Field;
        field = std::move(value);
        ZANT_LOG_INFO(line, Kind::argument(field));
        return true;
    }
};

template <auto Field>
using BoolTo = Store<Field, AsFlag>;
template <auto Field>
using BoolWordTo = Store<Field, AsWord>;
template <auto Field>
using Uint32To = Store<Field, AsInteger>;
template <auto Field>
using UnsignedTo = Store<Field, AsUnsigned>;
template <auto Field>
using Uint64To = Store<Field, AsCutInteger>;
template <auto Field>
using LongTo = Store<Field, AsLong>;
template <auto Field>
using StringTo = Store<Field, AsText>;

// Handles the section's keys with handle(key), which returns false to end the section. A value of the wrong kind ends
// the section too, with one line; std::out_of_range passes and ends the load.
template <class Handle>
bool walkKeys(const FlatKeyList& keys, KeySection section, Handle handle) {
    for (const uint32_t position : keys.positionsOf(section)) {
        try {
            if (!handle(keys[position])) return false;
        } catch (const std::runtime_error& error) {
            ZANT_LOG_ERROR("Exception occurred: %s", error.what());
            return false;
        }
    }
    return true;
}

// The walk itself. Walk has the section and its element, its records, and handle(key).
template <class Walk>
bool walkSection(const FlatKeyList& keys, Walk& walk) {
    return walkKeys(keys, Walk::section, [&walk](const FlatKey& key) {
        walk.records.settle(key, Walk::element);
        return walk.handle(key);
    });
}

}  // namespace zant::kor
