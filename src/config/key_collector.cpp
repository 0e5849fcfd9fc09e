#include "config/key_collector.h"

#include <algorithm>

namespace zant::kor {

namespace {

// Members of an object up to which a look-up goes through all of them.
constexpr rapidjson::SizeType LINEAR_LIMIT = 48;

// What keeps a member name from being one pointer token as it stands.
constexpr std::string_view NOT_PLAIN("/~\0", 3);

constexpr bool noWordEndsInDigit() {
    return std::none_of(KEY_WORDS.begin(), KEY_WORDS.end(),
                        [](std::string_view text) { return text.back() >= '0' && text.back() <= '9'; });
}
static_assert(noWordEndsInDigit(), "an index as a key's last element is taken to add no words");

// Stands for an index where a name's step is asked for.
const NameStep INDEX_STEP;

// A pointer token as an array index: decimal digits without leading zeros.
bool readPointerIndex(std::string_view token, rapidjson::SizeType& index) {
    if (token.empty() || (token.size() > 1 && token.front() == '0')) return false;
    const auto result = std::from_chars(token.data(), token.data() + token.size(), index);
    return result.ec == std::errc() && result.ptr == token.data() + token.size();
}

// "~0" and "~1" stand for '~' and '/'; any other use of '~' makes the whole pointer invalid.
bool unescapeToken(std::string_view token, std::string& text) {
    text.clear();
    for (size_t i = 0; i < token.size(); ++i) {
        if (token[i] != '~') {
            text.push_back(token[i]);
            continue;
        }
        if (++i == token.size() || (token[i] != '0' && token[i] != '1')) return false;
        text.push_back(token[i] == '0' ? '~' : '/');
    }
    return true;
}

struct SectionWord {
    KeySection section;
    KeyWord word;
    bool isWholeKey;
};

constexpr SectionWord SECTION_WORDS[] = {
    {KeySection::devices, word("devices"), false},
    {KeySection::graphs, word("graphs"), false},
    {KeySection::context, word("context"), false},
    {KeySection::groupContext, word("groupContext/share_resources"), true},
    {KeySection::groupContext, word("groupContext/share_resources_optimization_type"), true},
    {KeySection::groupContext, word("groupContext/reused_io_limit_mb"), true},
    {KeySection::memory, word("memory/mem_type"), true},
};

}  // namespace

const JsonValue* MemberIndex::find(const JsonValue& object, std::string_view name) {
    if (object.MemberCount() <= LINEAR_LIMIT) {
        for (auto member = object.MemberBegin(); member != object.MemberEnd(); ++member) {
            if (textOf(member->name) == name) return &member->value;
        }
        return nullptr;
    }
    auto [entry, isNew] = m_objects.try_emplace(&object);
    Members& members = entry->second;
    if (isNew) {
        members.reserve(object.MemberCount());
        for (auto member = object.MemberBegin(); member != object.MemberEnd(); ++member) {
            members.try_emplace(textOf(member->name), &member->value);
        }
    }
    const auto found = members.find(name);
    return found == members.end() ? nullptr : found->second;
}

MemberName& MemberNames::find(std::string_view text) {
    MemberName* expected = m_previous == nullptr ? nullptr : m_previous->follower;
    if (expected == nullptr || expected->text != text) {
        const auto [entry, isNew] = m_byText.try_emplace(text, nullptr);
        if (isNew) {
            entry->second = &m_names.emplace_back();
            entry->second->text = text;
            entry->second->isPlain = text.find_first_of(NOT_PLAIN) == std::string_view::npos;
        }
        expected = entry->second;
        if (m_previous != nullptr) m_previous->follower = expected;
    }
    m_previous = expected;
    return *expected;
}

void KeyCollector::collect() {
    if (m_root.IsObject()) walkMembers(m_root, &m_root, m_list.m_nodes.emplace_back());
}

// Appends the object's names to the open ones; true when one stands there twice.
bool KeyCollector::lookUpNames(const JsonValue& object) {
    const uint64_t serial = ++m_objects;
    bool hasDuplicates = false;
    for (auto member = object.MemberBegin(); member != object.MemberEnd(); ++member) {
        MemberName& name = m_names.find(textOf(member->name));
        hasDuplicates = hasDuplicates || name.lastObject == serial;
        name.lastObject = serial;
        m_openNames.push_back(&name);
    }
    return hasDuplicates;
}

void KeyCollector::walkMembers(const JsonValue& object, const JsonValue* reached, const PathNode& node) {
    const size_t first = m_openNames.size();
    const bool isPlainObject = !lookUpNames(object) && reached == &object;
    const bool isRoot = node.parent == nullptr;
    for (rapidjson::SizeType i = 0; i < object.MemberCount(); ++i) {
        const JsonValue& value = (object.MemberBegin() + i)->value;
        MemberName& name = *m_openNames[first + i];
        const bool isOwnValue = isPlainObject && name.isPlain && !(isRoot && name.text.empty());
        const JsonValue* childReached = isOwnValue ? &value : reachName(reached, name.text, isRoot);
        visit(value, childReached, node, {&stepOf(name, node.search.state), PathStep::NO_INDEX});
    }
    m_openNames.resize(first);
}

void KeyCollector::walkElements(const JsonValue& array, const JsonValue* reached, const PathNode& node) {
    for (rapidjson::SizeType i = 0; i < array.Size(); ++i) {
        const JsonValue* childReached = reached == &array ? &array[i] : reachToken(reached, IndexText(i).view());
        visit(array[i], childReached, node, {&INDEX_STEP, i});
    }
}

void KeyCollector::visit(const JsonValue& value, const JsonValue* reached, const PathNode& parent, PathStep step) {
    if (value.IsObject()) {
        if (!value.ObjectEmpty()) walkMembers(value, reached, addNode(parent, step));
    } else if (value.IsArray()) {
        if (!value.Empty()) walkElements(value, reached, addNode(parent, step));
    } else if (!value.IsNull()) {
        addKey(reached, parent, step);
    }
}

void KeyCollector::addKey(const JsonValue* reached, const PathNode& parent, PathStep step) {
    const auto position = static_cast<uint32_t>(m_list.m_keys.size());
    FlatKey& key = m_list.m_keys.emplace_back(&parent, step, reached);
    if (key.isEmpty()) key = FlatKey(&parent, step, nullptr);  // the empty text reaches nothing
    const KeyWordSet words = key.words();
    for (const SectionWord& section : SECTION_WORDS) {
        if (!words.has(section.word) || (section.isWholeKey && !key.equals(section.word))) continue;
        m_list.m_sections[static_cast<size_t>(section.section)].push_back(position);
    }
}

const PathNode& KeyCollector::addNode(const PathNode& parent, PathStep step) {
    PathNode& node = m_list.m_nodes.emplace_back();
    node.parent = &parent;
    node.step = step;
    node.textLength = static_cast<uint32_t>(parent.textLength + step.length() + 1);
    node.elements = parent.elements;
    node.elements.addStep(step);
    node.search = step.index == PathStep::NO_INDEX ? step.name->search
                                                   : searchKeyWords(parent.search.state, IndexText(step.index).view());
    node.preloadGroup = parent.preloadGroup;
    const KeyWordSearch slash = searchKeyWords(node.search.state, "/");
    node.search.state = slash.state;
    node.search.found.add(slash.found);
    node.search.found.add(parent.search.found);
    if (node.search.found.has(word("lora_preload_buffer_group"))) {
        node.preloadGroup.addNodeName(step.index == PathStep::NO_INDEX ? step.name->name
                                                                       : IndexText(step.index).view());
    }
    return node;
}

const NameStep& KeyCollector::stepOf(MemberName& name, uint16_t state) {
    for (const NameStep* step = name.steps; step != nullptr; step = step->sibling) {
        if (step->startState == state) return *step;
    }
    NameStep& step = m_list.m_names.emplace_back();
    step.name = name.text;
    step.startState = state;
    step.search = searchKeyWords(state, name.text);
    step.sibling = name.steps;
    name.steps = &step;
    return step;
}

const JsonValue* KeyCollector::reachName(const JsonValue* from, std::string_view name, bool atRoot) {
    if (atRoot && name.empty()) return &m_root;                // children bring the only slash
    if (atRoot && name.front() == '/') name.remove_prefix(1);  // this slash is the pointer's own
    std::string token;
    while (true) {
        const size_t slash = std::min(name.find('/'), name.size());
        if (!unescapeToken(name.substr(0, slash), token)) return nullptr;
        from = reachToken(from, token);
        if (slash == name.size()) return from;
        name.remove_prefix(slash + 1);
    }
}

const JsonValue* KeyCollector::reachToken(const JsonValue* from, std::string_view token) {
    if (from == nullptr) return nullptr;
    // The pointer's token ends at its first zero byte, so that a name which holds one is never reached.
    if (from->IsObject()) return m_members.find(*from, token.substr(0, token.find('\0')));
    rapidjson::SizeType index = 0;
    if (!from->IsArray() || !readPointerIndex(token, index) || index >= from->Size()) return nullptr;
    return &(*from)[index];
}

}  // namespace zant::kor
