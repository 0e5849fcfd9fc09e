#include "chip/report_chip.h"

#include <fmt/format.h>

#include "report/json_writing.h"
#include "report/table.h"

namespace runhost {

namespace {

bool areOfOneRecord(const ToldFact& left, const ToldFact& right) {
    return left.list == right.list && left.record == right.record;
}

}  // namespace

std::string chipText(const std::vector<ToldFact>& facts, const Style& style) {
    std::string text;
    for (auto first = facts.begin(); first != facts.end();) {
        std::vector<TableRow> rows{{"fact", "value", "from"}};
        auto end = first;
        for (; end != facts.end() && areOfOneRecord(*first, *end); ++end) {
            rows.push_back({end->name, end->value, end->origin});
        }
        const std::string heading = first->list == "chip" ? "chip" : fmt::format("{} {}", first->list, first->record);
        text += style.paint(Colour::BOLD, heading) + "\n" + formatTable(rows) + "\n";
        first = end;
    }
    return text;
}

std::string chipJson(const std::vector<ToldFact>& facts) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    writer.StartObject();
    writeArray(writer, "facts", facts, [&](const ToldFact& fact) {
        writer.StartObject();
        writeText(writer, "list", fact.list);
        writeNumber(writer, "record", fact.record);
        writeText(writer, "name", fact.name);
        writeText(writer, "value", fact.value);
        writeText(writer, "from", fact.origin);
        writer.EndObject();
    });
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

}  // namespace runhost
