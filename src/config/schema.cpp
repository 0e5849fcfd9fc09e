#include "config/schema.h"

#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <new>

#include "config/droppable_heap.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr char schemaText[] =
#include "config_schema.inc"
    ;

using SchemaDocument = rapidjson::GenericSchemaDocument<JsonValue, DroppableAllocator>;
using TextBuffer = rapidjson::GenericStringBuffer<JsonEncoding, ThrowingAllocator>;
using TextWriter = rapidjson::Writer<TextBuffer, JsonEncoding, JsonEncoding, ThrowingAllocator>;
using Validator =
    rapidjson::GenericSchemaValidator<SchemaDocument, rapidjson::BaseReaderHandler<JsonEncoding>, DroppableAllocator>;

// Passes a document's values on to the validator, which negates the smallest 64-bit integer and so overflows. The
// next one stands in for it: to this schema they are alike.
class ValidatorInput {
public:
    explicit ValidatorInput(Validator& validator) : m_validator(validator) {}

    bool Null() { return m_validator.Null(); }
    bool Bool(bool value) { return m_validator.Bool(value); }
    bool Int(int value) { return m_validator.Int(value); }
    bool Uint(unsigned value) { return m_validator.Uint(value); }
    bool Int64(int64_t value) { return m_validator.Int64(value == INT64_MIN ? INT64_MIN + 1 : value); }
    bool Uint64(uint64_t value) { return m_validator.Uint64(value); }
    bool Double(double value) { return m_validator.Double(value); }
    bool String(const char* text, rapidjson::SizeType length, bool copy) {
        return m_validator.String(text, length, copy);
    }
    bool StartObject() { return m_validator.StartObject(); }
    bool Key(const char* text, rapidjson::SizeType length, bool copy) { return m_validator.Key(text, length, copy); }
    bool EndObject(rapidjson::SizeType count) { return m_validator.EndObject(count); }
    bool StartArray() { return m_validator.StartArray(); }
    bool EndArray(rapidjson::SizeType count) { return m_validator.EndArray(count); }

private:
    Validator& m_validator;
};

template <class Pointer>
void writeFragment(TextWriter& writer, const char* name, const Pointer& pointer) {
    TextBuffer text;
    pointer.StringifyUriFragment(text);
    writer.Key(name);
    writer.String(text.GetString(), static_cast<rapidjson::SizeType>(text.GetSize()));
}

// The error value as compact JSON. Older RapidJSON has no error value: there the same shape is written from the
// keyword and the two places.
template <class AnyValidator>
void writeError(TextWriter& writer, AnyValidator& validator) {
    if constexpr (requires { validator.GetError(); }) {
        validator.GetError().Accept(writer);
    } else {
        const char* keyword = validator.GetInvalidSchemaKeyword();
        writer.StartObject();
        writer.Key(keyword != nullptr ? keyword : "");
        writer.StartObject();
        writeFragment(writer, "instanceRef", validator.GetInvalidDocumentPointer());
        writeFragment(writer, "schemaRef", validator.GetInvalidSchemaPointer());
        writer.EndObject();
        writer.EndObject();
    }
}

void logSchemaFault(Validator& validator) {
    TextBuffer place;
    validator.GetInvalidDocumentPointer().Stringify(place);
    ZANT_LOG_ERROR("Input file does not adhere to schema, error in key: %s", place.GetString());
    TextBuffer error;
    TextWriter writer(error);
    writeError(writer, validator);
    ZANT_LOG_ERROR("Schema error:\n%s", error.GetString());
}

}  // namespace

const char* const configSchemaText = schemaText;

thread_local DroppableHeap* DroppableHeap::t_current = nullptr;

bool validateDocument(const ConfigDocument& document, const char* text) {
    JsonTree schemaTree;
    schemaTree.Parse(text);
    if (schemaTree.HasParseError()) {
        ZANT_LOG_ERROR("Backend provided schema is not valid JSON, check format");
        return false;
    }
    // Schema and validator hold memory of this heap only, and are never destroyed but go with it: left by a shortage of
    // memory they would follow pointers that they have not set yet.
    DroppableHeap heap;
    DroppableAllocator allocator;
    const auto* schema = new (heap.allocate(sizeof(SchemaDocument))) SchemaDocument(schemaTree);
    auto* validator = new (heap.allocate(sizeof(Validator))) Validator(*schema, &allocator);
    ValidatorInput input(*validator);
    if (document.root().Accept(input)) return true;
    logSchemaFault(*validator);
    return false;
}

}  // namespace zant::kor
