#include "check/located_json.h"

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>

namespace runhost {

namespace {

std::string escapePointer(const std::string& name) {
    std::string escaped;
    for (const char c : name) {
        if (c == '~' || c == '/') {
            escaped += c == '~' ? "~0" : "~1";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

void writeNode(const Node& node, std::string& out);

void writeMember(bool& first, const std::string& name, std::string& out) {
    if (!first) out += ',';
    first = false;
    out += quoteJson(name) + ":";
}

void writeContainer(const Node& node, std::string& out) {
    const bool isObject = node.kind == Node::Kind::OBJECT;
    bool first = true;
    out += isObject ? '{' : '[';
    for (const auto& child : node.children) {
        if (child->removed) continue;
        if (isObject) {
            writeMember(first, child->name, out);
        } else {
            if (!first) out += ',';
            first = false;
        }
        writeNode(*child, out);
    }
    for (const auto& [name, text] : node.added) {
        writeMember(first, name, out);
        out += text;
    }
    out += isObject ? '}' : ']';
}

void writeNode(const Node& node, std::string& out) {
    if (!node.replacement.empty()) {
        out += node.replacement;
    } else if (node.kind == Node::Kind::ARRAY || node.kind == Node::Kind::OBJECT) {
        writeContainer(node, out);
    } else {
        out += node.text;
    }
}

void collect(Node& node, const std::string& key, std::vector<Leaf>& leaves) {
    if (node.isMended()) return;
    if (node.isScalar()) leaves.push_back({key, &node});
    size_t liveIndex = 0;
    for (const auto& child : node.children) {
        if (child->removed) continue;
        const std::string element = child->isElement() ? std::to_string(liveIndex) : child->name;
        ++liveIndex;
        std::string childKey = key;
        if (!key.empty()) childKey += '/';
        childKey += element;
        collect(*child, childKey, leaves);
    }
}

}  // namespace

Position positionOf(const std::string& source, size_t offset) {
    const auto end = source.begin() + static_cast<std::ptrdiff_t>(std::min(offset, source.size()));
    const auto lineStart = std::find(std::make_reverse_iterator(end), source.rend(), '\n').base();
    const auto isCharacterStart = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; };
    return {static_cast<size_t>(std::count(source.begin(), end, '\n')) + 1,
            static_cast<size_t>(std::count_if(lineStart, end, isCharacterStart)) + 1};
}

Node* Node::member(const std::string& memberName) const {
    const auto found = std::find_if(children.begin(), children.end(), [&](const auto& child) {
        return !child->isElement() && !child->isMended() && child->name == memberName;
    });
    return found == children.end() ? nullptr : found->get();
}

std::string pointerTo(const Node& node) {
    if (node.parent == nullptr) return {};
    return pointerTo(*node.parent) + "/" + (node.isElement() ? std::to_string(node.index) : escapePointer(node.name));
}

std::string subjectOf(const Node& node) {
    if (node.parent == nullptr) return "the document";
    if (!node.isElement()) return fmt::format("\"{}\"", node.name);
    return fmt::format("element {} of {}", node.index, subjectOf(*node.parent));
}

std::string writeJson(const Node& root) {
    std::string text;
    writeNode(root, text);
    return text;
}

std::string quoteJson(const std::string& text) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    return buffer.GetString();
}

std::vector<Leaf> collectLeaves(Node& root) {
    std::vector<Leaf> leaves;
    collect(root, {}, leaves);
    return leaves;
}

}  // namespace runhost
