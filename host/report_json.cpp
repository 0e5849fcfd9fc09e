#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "reports.h"

namespace runhost {

namespace {

using Writer = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

void writeText(Writer& writer, const char* name, const std::string& text) {
    writer.Key(name);
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

template <typename Items, typename Write>
void writeArray(Writer& writer, const char* name, const Items& items, Write write) {
    writer.Key(name);
    writer.StartArray();
    for (const auto& item : items) write(item);
    writer.EndArray();
}

void writeRecord(Writer& writer, const std::string& subject, const DecodedRecord& record) {
    writer.StartObject();
    writeText(writer, "subject", subject);
    writer.Key("option");
    writer.Uint(record.number);
    writer.Key("name");
    if (record.option.empty()) {
        writer.Null();
    } else {
        writer.String(record.option.c_str());
    }
    writeText(writer, "value", record.value);
    writeText(writer, "bytes", hexText(record.bytes));
    writer.EndObject();
}

void writeLogLine(Writer& writer, const LogLine& line) {
    writer.StartObject();
    writer.Key("level");
    writer.Int(line.level);
    writer.Key("timestamp_ns");
    writer.Uint64(line.timestampNs);
    writeText(writer, "text", line.text);
    writer.EndObject();
}

void writeCall(Writer& writer, const CallReport& call) {
    constexpr const char* outcomes[] = {"ok", "failed", "skipped"};
    writer.StartObject();
    writeText(writer, "name", call.name);
    writeText(writer, "by", call.byHost ? "host" : "hook");
    writeText(writer, "result", outcomes[static_cast<size_t>(call.outcome)]);
    writeText(writer, "note", call.note);
    writer.Key("records");
    writer.StartArray();
    for (const RecordGroup& group : call.recordGroups) {
        for (const DecodedRecord& record : group.records) writeRecord(writer, group.subject, record);
    }
    writer.EndArray();
    writeArray(writer, "log", call.log, [&](const LogLine& line) { writeLogLine(writer, line); });
    writer.EndObject();
}

}  // namespace

std::string jsonReport(const RunReport& report) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    writeText(writer, "library", report.library);
    writeText(writer, "backend", report.backend);
    writeText(writer, "document", report.document);
    writeText(writer, "machine", report.machine);
    writer.Key("log_level");
    writer.Int(report.logLevel);
    writer.Key("succeeded");
    writer.Bool(report.succeeded);
    writeArray(writer, "stages", report.stages, [&](const StageReport& stage) {
        writer.StartObject();
        writeText(writer, "title", stage.title);
        writeArray(writer, "calls", stage.calls, [&](const CallReport& call) { writeCall(writer, call); });
        writer.EndObject();
    });
    writeArray(writer, "ledger", report.ledger, [&](const std::string& line) {
        writer.String(line.data(), static_cast<rapidjson::SizeType>(line.size()));
    });
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

}  // namespace runhost
