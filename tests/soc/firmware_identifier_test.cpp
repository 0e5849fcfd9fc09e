#include "soc/firmware_identifier.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>

namespace soc {
namespace {

constexpr size_t HEADER_SIZE = 36;
constexpr size_t BUFFER_SIZE = 65536;
constexpr uint32_t REVISION_OF_405 = 0x8180;

template <class Word>
std::string with(std::string bytes, size_t offset, Word word) {
    std::memcpy(bytes.data() + offset, &word, sizeof(word));
    return bytes;
}

// The machine's tables, and their reads, by which a test sees the cache.
std::map<std::string, std::string> g_tables;
size_t g_reads = 0;
size_t countedRead(const char* name, void* buffer, size_t capacity) {
    ++g_reads;
    const std::string& bytes = g_tables[name];
    if (buffer != nullptr && bytes.size() <= capacity) std::memcpy(buffer, bytes.data(), bytes.size());
    return bytes.size();
}

std::string withLength(const std::string& bytes, uint32_t length) {
    return with(bytes, 4, length);
}

std::string table(const std::string& body, uint32_t oemRevision = 1) {
    const std::string bytes = std::string(HEADER_SIZE, '\0') + body;
    return withLength(with(bytes, 24, oemRevision), static_cast<uint32_t>(bytes.size()));
}

// The structure of two identifiers, as far as it is looked at.
std::string ids(uint64_t first, uint64_t second) {
    return with(with("\2" + std::string(23, '\0'), 8, first), 16, second);
}

std::string gap(size_t size) {
    return std::string(size, '\1');
}

class FirmwareIdentifierTest : public testing::Test {
protected:
    void SetUp() override { g_tables = {{"FACP", table(gap(240))}}; }
};

struct TopologyCase {
    const char* what;
    std::string bytes;
    uint32_t identifier;
    bool cached;
};

const TopologyCase TOPOLOGIES[] = {
    {"first entry of the map", table(gap(24) + ids(0x88, 0x22B)), 538, true},
    {"a pair that nobody knows", table(ids(0x88, 0x1F2)), 0, true},
    {"both identifiers 0", table(ids(0, 0)), 0, false},
    {"no byte equal to 2", table(gap(200)), 0, false},
    {"the first such byte counts, amid another node", table(gap(5) + ids(0xA1, 0x2BB) + gap(3) + ids(0x71, 0x1C1)), 662,
     true},
    {"a first structure without a key hides the second", table(ids(0, 0) + ids(0x71, 0x1C1)), 0, false},
    {"the first identifier's upper half is shifted out", table(ids(0x5'0000'0071, 0x1C1)), 435, true},
    {"the second identifier's upper half is ORed in", table(ids(0x70, 0x1'0000'01C1)), 435, true},
    {"the length ends in the structure", withLength(table(gap(24) + ids(0x71, 0x1C1)), 25), 435, true},
    {"a length beyond the file, structure found", withLength(table(ids(0x71, 0x1C1)), 0xFFFFFFFF), 435, true},
    {"cut inside the second identifier", table(ids(0x71, 0x1C1)).substr(0, HEADER_SIZE + 23), 0, false},
    {"cut inside the header", table(ids(0x71, 0x1C1)).substr(0, 5), 0, false},
    {"empty", "", 0, false},
    {"the buffer's whole size", table(gap(BUFFER_SIZE - HEADER_SIZE - 24) + ids(0x71, 0x1C1)), 435, true},
    {"one byte more", table(gap(BUFFER_SIZE - HEADER_SIZE - 23) + ids(0x71, 0x1C1)), 0, false},
};

TEST_F(FirmwareIdentifierTest, TheTopologyTableNamesTheChip) {
    // What lies in the working buffer from the table before is no part of this one.
    std::string before;
    while (before.size() < 1000) before += ids(0xA8, 0x2B5);
    g_tables["FACP"] = table(before);
    for (const auto& [what, bytes, identifier, cached] : TOPOLOGIES) {
        SCOPED_TRACE(what);
        FirmwareIdentifier firmware(countedRead);
        g_tables["PPTT"] = bytes;
        EXPECT_EQ(firmware.identify(), identifier);
        g_tables["PPTT"] = table(ids(0xA1, 0x2BA));
        g_reads = 0;
        EXPECT_EQ(firmware.identify(), cached ? identifier : 662);
        EXPECT_EQ(g_reads == 0, cached);
    }
}

TEST_F(FirmwareIdentifierTest, TheFixedTableComesFirst) {
    FirmwareIdentifier firmware(countedRead);
    const auto identified = [&](const std::string& fixed) {
        g_tables["FACP"] = fixed;
        return firmware.identify();
    };
    EXPECT_EQ(identified(table("")), 0U) << "no topology table";
    g_tables["PPTT"] = table(ids(0xA8, 0x2D9));
    g_tables.erase("FACP");
    EXPECT_EQ(firmware.identify(), 0U);
    EXPECT_EQ(identified(""), 0U);
    EXPECT_EQ(identified(table(gap(BUFFER_SIZE), REVISION_OF_405)), 0U) << "larger than what is read";
    EXPECT_EQ(identified(table("", REVISION_OF_405).substr(0, 28)), 405U);
    g_reads = 0;
    EXPECT_EQ(identified(table(gap(240), REVISION_OF_405)), 405U) << "was not cached";
    EXPECT_EQ(g_reads, 2U) << "the fixed table's size and contents";
    EXPECT_EQ(identified(table("", REVISION_OF_405).substr(0, 27)), 693U) << "the revision is cut";
    EXPECT_EQ(identified(table("", REVISION_OF_405)), 693U) << "cached by now";
}

}  // namespace
}  // namespace soc
