#include "config/schema.h"

#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstddef>
#include <new>
#include <type_traits>

#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr char schemaText[] =
#include "config_schema.inc"
    ;

// Chunk of the pool that holds the compiled schema: below the size at which malloc maps fresh pages for each block.
constexpr size_t SCHEMA_POOL_BYTES = size_t{64} << 10;

using SchemaDocument = rapidjson::GenericSchemaDocument<JsonValue, JsonPool>;
using TextBuffer = rapidjson::GenericStringBuffer<JsonEncoding, ThrowingAllocator>;
using TextWriter = rapidjson::Writer<TextBuffer, JsonEncoding, JsonEncoding, ThrowingAllocator>;
using Validator =
    rapidjson::GenericSchemaValidator<SchemaDocument, rapidjson::BaseReaderHandler<JsonEncoding>, JsonPool>;

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

// The constructor's arguments grew between RapidJSON's versions; the compiled schema lives in the caller's pool.
template <class Schema>
Schema compileSchema(const JsonValue& tree, JsonPool& pool) {
    if constexpr (std::is_constructible_v<Schema, const JsonValue&, std::nullptr_t, JsonPool*>) {
        return Schema(tree, nullptr, &pool);
    } else {
        return Schema(tree, nullptr, 0, nullptr, &pool);
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

bool validateDocument(const ConfigDocument& document, const char* text) {
    JsonPool pool(SCHEMA_POOL_BYTES);
    JsonTree schemaTree(&pool);
    schemaTree.Parse(text);
    if (schemaTree.HasParseError()) {
        ZANT_LOG_ERROR("Backend provided schema is not valid JSON, check format");
        return false;
    }
    const auto schema = compileSchema<SchemaDocument>(schemaTree, pool);
    // Whatever the validator holds lies in the pool, and it is never destroyed: left by a shortage of memory it would
    // follow pointers that it has not set yet.
    auto* validator = new (pool.Malloc(sizeof(Validator))) Validator(schema, &pool);
    if (document.root().Accept(*validator)) return true;
    logSchemaFault(*validator);
    return false;
}

}  // namespace zant::kor
