// What is loaded, what counts as an answer, and answers of libraries that lie.
#include "soc/capability_library.h"

#include <stdexcept>

#include "platform/driver_directory.h"
#include "soc/capability_fixture.h"
#include "soc/capability_records.h"

namespace soc {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Pair;

std::vector<std::string> pathsOf(uint32_t mode, const std::string& ownPath) {
    std::vector<std::string> paths;
    for (const auto& [directory, fileName] : capabilityCandidates(mode, ownPath)) {
        paths.push_back(zant::system::joinPath(directory, fileName));
    }
    return paths;
}

TEST_F(CapabilityTest, CandidatesComeInTheirOrder) {
    const std::string driver =
        zant::system::joinPath(zant::system::getDriverDirectory(), "KOR") + "/ZantSystemInfo.dll";
    const std::string bare = "CorvaneSoCServiceUtils.dll";
    EXPECT_THAT(pathsOf(0, "/a/b/own.so"),
                ElementsAre("/a/b/ZantSystemInfo.dll", "/a/b/CorvaneSoCServiceUtils.dll", driver, bare));
    EXPECT_THAT(pathsOf(1, "C:\\a/b\\own.dll"), ElementsAre("C:\\a/b/CorvaneSoCServiceUtils.dll", bare));
    EXPECT_THAT(pathsOf(1, "own.so"), ElementsAre("own.so/CorvaneSoCServiceUtils.dll", bare));
    EXPECT_THAT(pathsOf(0, ""), ElementsAre(driver, bare));
    EXPECT_THAT(pathsOf(2, "/a/own.so"), ElementsAre());
}

TEST_F(CapabilityTest, TheFirstThatLoadsIsTaken) {
    const CapabilityLibrary found(
        {{"/nowhere", CORVANE_SERVICE_UTILS}, {simFolder(), ZANT_SYSTEM_INFO}, {simFolder(), CORVANE_SERVICE_UTILS}});
    EXPECT_EQ(found.loadedName(), ZANT_SYSTEM_INFO);
    EXPECT_NE(found.getCapabilitySerialized(), nullptr);
    // A library of the other name is not asked for that, even if it has it.
    std::filesystem::copy_file(simFolder() + ZANT_SYSTEM_INFO, m_folder.path(CORVANE_SERVICE_UTILS));
    EXPECT_EQ(load({{m_folder.path(""), CORVANE_SERVICE_UTILS}}).getCapabilitySerialized(), nullptr);
    const CapabilityLibrary none = load({{"/nowhere", ZANT_SYSTEM_INFO}});
    EXPECT_EQ(none.loadedName(), "");
    EXPECT_FALSE(none.isAnswering());
    answer("");
    EXPECT_THAT(getVersion(found), Pair(3, 7));
    EXPECT_THAT(getVersion(none), Pair(-1, -1));
    answer("", R"(,"version":6)");
    EXPECT_THAT(getVersion(found), Pair(-1, -1));
}

TEST_F(CapabilityTest, ALibraryCountsWhenItIsWholeAndKnowsTheArchitecture) {
    answer(R"("1":4)");
    EXPECT_FALSE(corvane().isAnswering());
    answer(R"("3":0)");
    EXPECT_TRUE(corvane().isAnswering());
    EXPECT_TRUE(zant().isAnswering());
    // A library of the one name with the entry points of the other.
    std::filesystem::copy_file(simFolder() + CORVANE_SERVICE_UTILS, m_folder.path(ZANT_SYSTEM_INFO));
    const CapabilityLibrary incomplete = load({{m_folder.path(""), ZANT_SYSTEM_INFO}});
    EXPECT_NE(incomplete.getCapability(), nullptr);
    EXPECT_FALSE(incomplete.isAnswering());
    // Neither name.
    std::filesystem::copy_file(simFolder() + CORVANE_SERVICE_UTILS, m_folder.path("Other.dll"));
    EXPECT_FALSE(load({{m_folder.path(""), "Other.dll"}}).isAnswering());
}

TEST_F(CapabilityTest, AnswersHaveTheirOwnSizes) {
    answer(R"("1":4294967299,"2":513,"43":2.5,"44":{"bytes":[0,0,0,0,0,0,0,0]},"4":{"bytes":[1,2,3,4]},)"
           R"("5":{"bytes":[1,2,3,4,5,6,7,8,9]},"7":{"status":2,"bytes":[1,2,3,4,5,6,7,8]},"8":{"throw":true})");
    const CapabilityLibrary library = zant();
    uint64_t whole = 0;
    uint8_t narrow = 0;
    float real = 0;
    EXPECT_TRUE(getAnswer(library, 2, 1, whole) && whole == 4294967299);
    EXPECT_TRUE(getAnswer(library, 2, 2, narrow) && narrow == 1);
    EXPECT_TRUE(getAnswer(library, 2, 43, real) && real == 2.5F);
    EXPECT_FALSE(getAnswer(library, 2, 44, real));
    for (const uint32_t capability : {4U, 5U, 6U, 7U, 8U, 43U}) {
        EXPECT_FALSE(getAnswer(library, 2, capability, whole)) << capability;
    }
    EXPECT_EQ(whole, 4294967299U);
    EXPECT_EQ(real, 2.5F);
}

TEST_F(CapabilityTest, TextsEndInsideTheirSize) {
    const std::string longName(40, 'x');
    answer("", R"(,"gpu":{"4":"GPU 1","5":")" + longName + R"(","6":{"bytes":[65,66]},"7":{"bytes":[65,0,66]},)" +
                   R"("8":{"bytes":[65,66],"size":33},"9":{"bytes":[65,66,0],"size":2}})");
    const CapabilityLibrary library = corvane();
    std::string text;
    EXPECT_TRUE(getString(library, 3, 4, text) && text == "GPU 1");
    EXPECT_TRUE(getString(library, 3, 5, text) && text == longName) << "asked again with the size it wants";
    EXPECT_FALSE(getString(library, 3, 6, text));
    EXPECT_EQ(text, longName);
    EXPECT_TRUE(getString(library, 3, 7, text) && text == "A");
    EXPECT_TRUE(getString(library, 3, 8, text) && text == "AB") << "zeros behind what was written";
    EXPECT_FALSE(getString(library, 3, 9, text)) << "the terminator lies behind the size";
}

template <class Query>
std::string failureOf(Query&& query) {
    try {
        query();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST_F(CapabilityTest, QueriesEndAndSayWhy) {
    answer(R"("1":{"status":5,"size":64},"2":{"status":5,"size":1048577},"3":{"size":1048577},)"
           R"("4":{"status":5,"size":18446744073709551615},"5":{"bytes":[1],"size":1048576})");
    const CapabilityLibrary library = zant();
    for (const uint32_t capability : {1U, 2U, 3U, 4U, 6U}) {
        EXPECT_EQ(failureOf([&] { query(library, 2, capability, 8); }), "GetCapability failed") << capability;
        EXPECT_EQ(failureOf([&] { querySerialized(library, 2, capability, 8); }), "GetCapabilitySerialized failed");
    }
    EXPECT_EQ(query(library, 2, 5, 8).size(), 1048576U);
    const CapabilityLibrary none = load({});
    EXPECT_EQ(failureOf([&] { query(none, 2, 1, 8); }), "SoCServiceUtils/ZantSystemInfo not loaded");
    EXPECT_EQ(failureOf([&] { querySerialized(corvane(), 2, 1, 8); }), "ZantSystemInfo not loaded");
}

TEST_F(CapabilityTest, RecordsAreOfTheOneDspAndWhole) {
    answer(R"("16":[4,5],"46":[[2,3],[0,1],[2,3]],"47":["cdsp","adsp"],"48":[[7,"cdsp",3],[7,"late",4]])");
    std::vector<uint32_t> values;
    std::set<std::pair<uint32_t, uint32_t>> pairs;
    std::vector<std::string> names;
    std::map<uint32_t, std::pair<std::string, uint32_t>> domains;
    const auto ask = [&](auto& out, uint32_t capability) { return getAnswer(zant(), 2, capability, out); };
    EXPECT_TRUE(ask(values, 16) && ask(pairs, 46) && ask(names, 47) && ask(domains, 48));
    EXPECT_THAT(values, ElementsAre(4, 5));
    EXPECT_THAT(pairs, ElementsAre(Pair(0, 1), Pair(2, 3)));
    EXPECT_THAT(names, ElementsAre("cdsp", "adsp"));
    EXPECT_THAT(domains, ElementsAre(Pair(7, Pair("cdsp", 3))));

    std::string unterminated = R"({"bytes":[0,0,0,0)";
    for (int i = 0; i < 32; ++i) unterminated += ",65";
    answer(R"("16":{"records":[9],"index":1},"46":{"bytes":[0,0,0,0,1,0,0,0,2,0,0,0,3]},"47":)" + unterminated +
           R"(]},"48":{"bytes":[0,0,0,0],"size":40})");
    EXPECT_FALSE(ask(values, 16) || ask(pairs, 46) || ask(names, 47) || ask(domains, 48));
    EXPECT_EQ(values.size() + pairs.size() + names.size() + domains.size(), 7U) << "as they were";
    answer(R"("16":[])");
    EXPECT_TRUE(ask(values, 16) && values.empty());
    EXPECT_FALSE(getAnswer(corvane(), 2, 16, values));
}

}  // namespace
}  // namespace soc
