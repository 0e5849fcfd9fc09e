#include <fmt/format.h>

#include "report/reports.h"
#include "report/table.h"

namespace runhost {

namespace {

std::string milliseconds(uint64_t ns) {
    return fmt::format("{:.3f} ms", static_cast<double>(ns) / 1e6);
}

std::string blocksText(const MemoryMap& memory) {
    std::vector<TableRow> rows{{"block", "bytes", "descriptor", "registered with", "as", "at", "bytes"}};
    for (const MemoryBlock& block : memory.blocks) {
        TableRow row{block.label, fmt::format("{}", block.size), fmt::format("{}", block.descriptor)};
        if (block.regions.empty()) rows.push_back(row);
        for (const MemoryRegion& region : block.regions) {
            row.insert(row.end(),
                       {region.context, region.use, fmt::format("{}", region.offset), fmt::format("{}", region.size)});
            rows.push_back(row);
            row.assign(3, "");
        }
    }
    return formatTable(rows);
}

std::string detachedText(const MemoryMap& memory) {
    std::vector<TableRow> rows{{"context", "buffers", "from", "to", ""}};
    for (const DetachedTime& time : memory.detached) {
        rows.push_back({time.context, fmt::format("{}", time.buffers), milliseconds(time.fromNs),
                        milliseconds(time.toNs), time.when});
    }
    return formatTable(rows);
}

}  // namespace

std::string memoryText(const RunReport& report, const Style& style) {
    std::string text;
    if (!report.memory.blocks.empty()) {
        text += fmt::format("\n{}\n{}", style.paint(Colour::BOLD, "Memory: shared blocks when the first run starts"),
                            blocksText(report.memory));
    }
    if (!report.memory.detached.empty()) {
        text += fmt::format("\n{}\n{}", style.paint(Colour::BOLD, "Detached: buffers that contexts gave up"),
                            detachedText(report.memory));
    }
    return text;
}

void writeMemory(JsonWriter& writer, const RunReport& report) {
    writer.Key("memory");
    writer.StartObject();
    writeArray(writer, "blocks", report.memory.blocks, [&](const MemoryBlock& block) {
        writer.StartObject();
        writeText(writer, "label", block.label);
        writeNumber(writer, "bytes", block.size);
        writer.Key("descriptor");
        writer.Int(block.descriptor);
        writeArray(writer, "regions", block.regions, [&](const MemoryRegion& region) {
            writer.StartObject();
            writeText(writer, "context", region.context);
            writeText(writer, "as", region.use);
            writeNumber(writer, "offset", region.offset);
            writeNumber(writer, "bytes", region.size);
            writer.EndObject();
        });
        writer.EndObject();
    });
    writeArray(writer, "detached", report.memory.detached, [&](const DetachedTime& time) {
        writer.StartObject();
        writeText(writer, "context", time.context);
        writeNumber(writer, "buffers", time.buffers);
        writeNumber(writer, "from_ns", time.fromNs);
        writeNumber(writer, "to_ns", time.toNs);
        writeText(writer, "when", time.when);
        writer.EndObject();
    });
    writeArray(writer, "ledger", report.memoryLedger, [&](const std::string& line) { writeText(writer, line); });
    writer.EndObject();
}

}  // namespace runhost
