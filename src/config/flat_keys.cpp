#include "config/flat_keys.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "config/key_collector.h"

namespace zant::kor {

namespace {

constexpr std::array<std::string_view, 4> FOLLOWED = {"devices", "graphs", "context", "custom"};

}  // namespace

IndexElement::IndexElement(std::string_view text) : m_code(TEXT) {
    int64_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return;
        if (number <= INT32_MAX) number = number * 10 + (c - '0');
    }
    m_code = number > INT32_MAX ? TOO_LARGE : static_cast<int32_t>(number);
}

int32_t IndexElement::toIndex() const {
    if (m_code == TOO_LARGE) throw std::out_of_range("stoi argument out of range");
    return m_code;
}

void KeyElements::add(std::string_view element, IndexElement index) {
    for (size_t i = 0; i < FOLLOWED.size(); ++i) {
        if (m_seen[i]) {
            if (m_after[i].isNone()) m_after[i] = index;
        } else {
            m_seen[i] = element == FOLLOWED[i];
        }
    }
    if (m_hasFirst && m_second.isNone()) m_second = index;
    m_hasFirst = true;
}

void KeyElements::addStep(const PathStep& step) {
    if (step.index != PathStep::NO_INDEX) {
        add({}, IndexElement::ofIndex(step.index));
        return;
    }
    std::string_view name = step.name->name;
    while (!name.empty()) {
        const size_t slash = std::min(name.find('/'), name.size());
        const std::string_view element = name.substr(0, slash);
        if (!element.empty()) add(element, IndexElement(element));
        name.remove_prefix(std::min(slash + 1, name.size()));
    }
}

void PreloadGroup::addNodeName(std::string_view name) {
    if (m_state == State::complete) return;
    addText(std::string(name) + '/');
}

void PreloadGroup::addLeafName(std::string_view name) {
    if (m_state != State::complete) addText(name);
}

void PreloadGroup::addText(std::string_view text) {
    constexpr std::string_view prefix = "lora_preload_buffer_group/";
    if (m_state == State::notFound) {
        const size_t found = text.find(prefix);
        if (found == std::string_view::npos) return;
        text.remove_prefix(found + prefix.size());
        m_state = State::awaiting;
    }
    const size_t slash = text.find('/');
    if (slash == std::string_view::npos) return;  // the group begins with the next name, or nothing follows it
    const std::string_view group = text.substr(0, slash);
    m_group = IndexElement(group.empty() ? "no index" : group);
    m_state = State::complete;
}

size_t PathStep::length() const noexcept {
    if (index == NO_INDEX) return name->name.size();
    return IndexText(index).view().size();
}

void PathStep::appendReversedTo(std::string& text) const {
    const IndexText digits(index);
    const std::string_view own = index == NO_INDEX ? name->name : digits.view();
    text.append(own.rbegin(), own.rend());
}

// Written from the leaf up and turned round: the way down is not known.
std::string FlatKey::text() const {
    std::string text;
    text.reserve(length());
    step().appendReversedTo(text);
    for (const PathNode* node = m_parent; node->parent != nullptr; node = node->parent) {
        text.push_back('/');
        node->step.appendReversedTo(text);
    }
    std::reverse(text.begin(), text.end());
    return text;
}

PreloadGroup FlatKey::preloadGroup() const {
    PreloadGroup group = m_parent->preloadGroup;
    if (m_index == PathStep::NO_INDEX) {
        group.addLeafName(m_name->name);
    } else {
        group.addLeafName(IndexText(m_index).view());
    }
    return group;
}

KeyElements FlatKey::elements() const {
    KeyElements elements = m_parent->elements;
    elements.addStep(step());
    return elements;
}

IndexElement FlatKey::after(KeyElement element) const {
    // Mostly the answer lies in the part of the path that the key shares with its neighbours.
    const IndexElement known = m_parent->elements.after(element);
    return !known.isNone() ? known : elements().after(element);
}

IndexElement FlatKey::afterOrSecond(KeyElement element) const {
    const IndexElement known = after(element);
    if (!known.isNone()) return known;
    const KeyElements all = elements();
    return all.has(element) ? known : all.second();
}

FlatKeyList collectKeys(const ConfigDocument& document) {
    FlatKeyList list;
    KeyCollector(document, list).collect();
    return list;
}

}  // namespace zant::kor
