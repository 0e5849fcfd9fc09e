// From JSON text to the located tree, over RapidJSON's event parser.
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <string_view>

#include "check/located_json.h"

namespace runhost {

namespace {

// What the library accepts too; deeper documents are no work of a person.
constexpr size_t MAX_NESTING = 512;

class TreeBuilder {
public:
    TreeBuilder(const std::string& source, const rapidjson::MemoryStream& stream)
        : m_source(source), m_stream(stream) {}

    std::unique_ptr<Node> takeRoot() { return std::move(m_root); }

    bool Null() { return addScalar(Node::Kind::NOTHING, m_stream.Tell() - 4); }
    bool Bool(bool value) { return addScalar(Node::Kind::BOOLEAN, m_stream.Tell() - (value ? 4 : 5)); }
    bool RawNumber(const char*, rapidjson::SizeType, bool) { return addScalar(Node::Kind::NUMBER, numberStart()); }
    // Numbers come as text; the parser's interface asks for the rest all the same.
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(int64_t) { return false; }
    bool Uint64(uint64_t) { return false; }
    bool Double(double) { return false; }

    bool String(const char* text, rapidjson::SizeType length, bool) {
        add(Node::Kind::STRING, stringStart());
        m_last->text = m_source.substr(m_last->offset, m_stream.Tell() - m_last->offset);
        m_last->string.assign(text, length);
        return true;
    }
    bool Key(const char* text, rapidjson::SizeType length, bool) {
        m_name.assign(text, length);
        m_nameOffset = stringStart();
        return true;
    }
    bool StartObject() { return open(Node::Kind::OBJECT); }
    bool StartArray() { return open(Node::Kind::ARRAY); }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool EndArray(rapidjson::SizeType) { return close(); }

private:
    // The stream stands right behind the token; these look back for its first byte.
    size_t numberStart() const {
        const std::string_view before = std::string_view(m_source).substr(0, m_stream.Tell());
        return before.find_last_not_of("+-.0123456789Ee") + 1;  // npos + 1 is 0
    }
    size_t stringStart() const {
        size_t quote = m_stream.Tell() - 1;
        size_t escapes = 0;
        do {
            quote = m_source.rfind('"', quote - 1);
            const size_t last = m_source.find_last_not_of('\\', quote - 1);
            escapes = quote == 0 ? 0 : quote - 1 - (last == std::string::npos ? 0 : last);
        } while (escapes % 2 != 0);
        return quote;
    }

    void add(Node::Kind kind, size_t offset) {
        auto node = std::make_unique<Node>();
        m_last = node.get();
        node->kind = kind;
        node->offset = offset;
        node->nameOffset = offset;
        if (m_open.empty()) {
            m_root = std::move(node);
            return;
        }
        Node& parent = *m_open.back();
        node->parent = &parent;
        node->index = parent.children.size();
        if (parent.kind == Node::Kind::OBJECT) {
            node->name = std::move(m_name);
            node->nameOffset = m_nameOffset;
        }
        parent.children.push_back(std::move(node));
    }
    bool addScalar(Node::Kind kind, size_t offset) {
        add(kind, offset);
        m_last->text = m_source.substr(offset, m_stream.Tell() - offset);
        return true;
    }
    // The iterative parser tells of a container before it takes the bracket.
    bool open(Node::Kind kind) {
        add(kind, m_stream.Tell());
        m_open.push_back(m_last);
        return m_open.size() <= MAX_NESTING;
    }
    bool close() {
        m_open.pop_back();
        return true;
    }

    const std::string& m_source;
    const rapidjson::MemoryStream& m_stream;
    std::unique_ptr<Node> m_root;
    std::vector<Node*> m_open;
    Node* m_last = nullptr;
    std::string m_name;
    size_t m_nameOffset = 0;
};

}  // namespace

LocatedDocument parseLocated(const std::string& source) {
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::MemoryStream stream(source.data(), source.size());
    TreeBuilder builder(source, stream);
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse<flags>(stream, builder);
    if (!result.IsError()) return {builder.takeRoot(), 0, {}};
    LocatedDocument failed;
    failed.errorOffset = result.Offset();
    failed.error = result.Code() == rapidjson::kParseErrorTermination ? "Nested deeper than 512 levels."
                                                                      : rapidjson::GetParseError_En(result.Code());
    if (source.compare(0, 3, "\xEF\xBB\xBF") == 0) failed.error = "A byte order mark is no part of JSON.";
    return failed;
}

}  // namespace runhost
