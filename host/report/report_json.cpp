#include "report/reports.h"

namespace runhost {

namespace {

void writeRecord(JsonWriter& writer, const std::string& subject, const DecodedRecord& record) {
    writer.StartObject();
    writeText(writer, "subject", subject);
    writeNumber(writer, "option", record.number);
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

void writeLogLine(JsonWriter& writer, const LogLine& line) {
    writer.StartObject();
    writer.Key("level");
    writer.Int(line.level);
    writeNumber(writer, "timestamp_ns", line.timestampNs);
    writeText(writer, "text", line.text);
    writer.EndObject();
}

void writeCall(JsonWriter& writer, const CallReport& call) {
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
    JsonWriter writer(buffer);
    writer.StartObject();
    writeText(writer, "library", report.library);
    writeText(writer, "backend", report.backend);
    writeText(writer, "document", report.document);
    writeText(writer, "machine", report.machine);
    writeText(writer, "runs", report.plan);
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
    writeVotes(writer, report);
    writeMemory(writer, report);
    writeArray(writer, "ledger", report.ledger, [&](const std::string& line) { writeText(writer, line); });
    writeArray(writer, "misuse", report.misuse, [&](const std::string& line) { writeText(writer, line); });
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

}  // namespace runhost
