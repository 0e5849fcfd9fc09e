// Small steps that the JSON reports share.
#pragma once

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <string>

#include "records/vote_decode.h"

namespace runhost {

using JsonWriter = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

inline void writeText(JsonWriter& writer, const std::string& text) {
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

inline void writeText(JsonWriter& writer, const char* name, const std::string& text) {
    writer.Key(name);
    writeText(writer, text);
}

inline void writeNumber(JsonWriter& writer, const char* name, uint64_t number) {
    writer.Key(name);
    writer.Uint64(number);
}

template <typename Items, typename Write>
void writeArray(JsonWriter& writer, const char* name, const Items& items, Write write) {
    writer.Key(name);
    writer.StartArray();
    for (const auto& item : items) write(item);
    writer.EndArray();
}

// The members of a vote, into an object that stands open: corners are null in a list of settings alone.
void writeVote(JsonWriter& writer, const DecodedVote& vote);

}  // namespace runhost
