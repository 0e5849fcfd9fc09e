// The time line of votes and the time at each level, as JSON.
#include "report/json_writing.h"
#include "report/reports.h"

namespace runhost {

namespace {

void writeCorners(JsonWriter& writer, const char* name, const CornerNames& corners) {
    writer.Key(name);
    if (corners.min.empty()) {
        writer.Null();
        return;
    }
    writer.StartObject();
    writeText(writer, "min", corners.min);
    writeText(writer, "target", corners.target);
    writeText(writer, "max", corners.max);
    writer.EndObject();
}

void writeId(JsonWriter& writer, uint32_t id, uint32_t deviceId, uint32_t coreId) {
    writeNumber(writer, "id", id);
    writeNumber(writer, "device", deviceId);
    writeNumber(writer, "core", coreId);
}

}  // namespace

void writeVote(JsonWriter& writer, const DecodedVote& vote) {
    writeCorners(writer, "bus_corners", vote.bus);
    writeCorners(writer, "core_corners", vote.core);
    if (vote.holdsCorners) {
        writeNumber(writer, "sleep_latency_us", vote.sleepLatencyUs);
        writeText(writer, "power_mode", vote.powerMode);
    }
    writeArray(writer, "further", vote.extras, [&](const std::string& extra) { writeText(writer, extra); });
}

void writeVotes(JsonWriter& writer, const RunReport& report) {
    writeArray(writer, "votes", report.votes, [&](const VoteLine& line) {
        writer.StartObject();
        writeNumber(writer, "time_ns", line.timeNs);
        writeText(writer, "stage", line.stage);
        writeText(writer, "thread", line.thread);
        writeNumber(writer, "thread_number", line.threadNumber);
        writeId(writer, line.id, line.deviceId, line.coreId);
        writer.Key("id_destroyed");
        writer.Bool(line.ended);
        writeVote(writer, line.vote);
        writer.EndObject();
    });
    writeNumber(writer, "runs_with_votes", report.votingRuns);
    writeNumber(writer, "runs_without_votes", report.quietRuns);
    writeArray(writer, "levels", report.levels, [&](const Level& level) {
        writer.StartObject();
        writeId(writer, level.id, level.deviceId, level.coreId);
        writeNumber(writer, "stood_ns", level.timeNs);
        writeNumber(writer, "votes", level.casts);
        writeVote(writer, level.vote);
        writer.EndObject();
    });
}

}  // namespace runhost
