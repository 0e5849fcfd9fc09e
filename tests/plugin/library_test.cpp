// The shipped file itself: its symbol table, and that it can be loaded and unloaded at will.
#include <elf.h>
#include <gmock/gmock.h>

#include <cstring>
#include <set>

#include "support/loaded.h"
#include "support/process.h"

namespace {

using namespace testing_support;

template <typename Record>
Record recordAt(const std::string& file, size_t offset) {
    Record record;
    if (offset + sizeof(record) > file.size()) throw std::out_of_range("a record behind the file's end");
    std::memcpy(&record, file.data() + offset, sizeof(record));
    return record;
}

// The names that a file defines for others.
std::set<std::string> definedSymbols(const std::string& path) {
    const std::string file = readText(path);
    const auto header = recordAt<Elf64_Ehdr>(file, 0);
    std::set<std::string> names;
    for (size_t section = 0; section < header.e_shnum; ++section) {
        const auto table = recordAt<Elf64_Shdr>(file, header.e_shoff + section * header.e_shentsize);
        if (table.sh_type != SHT_DYNSYM) continue;
        const auto strings = recordAt<Elf64_Shdr>(file, header.e_shoff + table.sh_link * header.e_shentsize);
        for (size_t i = 0; i < table.sh_size / sizeof(Elf64_Sym); ++i) {
            const auto symbol = recordAt<Elf64_Sym>(file, table.sh_offset + i * sizeof(Elf64_Sym));
            if (symbol.st_shndx != SHN_UNDEF) names.insert(file.c_str() + strings.sh_offset + symbol.st_name);
        }
    }
    return names;
}

TEST(Library, DefinesTwoDynamicSymbols) {
    EXPECT_THAT(definedSymbols(EXTENSIONS_LIBRARY),
                testing::UnorderedElementsAre("createBackendInterface", "destroyBackendInterface"));
}

TEST(Library, IsReallyGoneAfterEachOfAHundredUnloads) {
    const std::string document = readText(example("custom_corners_array.json"));
    for (int i = 0; i < 100; ++i) {
        {
            const Extension extension;
            ASSERT_TRUE(extension->loadConfig(document));
        }
        ASSERT_EQ(dlopen(EXTENSIONS_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "after round " << i;
    }
}

TEST(Library, TwoObjectsKeepTheirDocumentsApart) {
    const Extension first;
    const Extension second;
    ASSERT_TRUE(first->loadConfig(R"({"devices":[{"core_id":[3],"profiling_level":"linting"}]})"));
    ASSERT_TRUE(second->loadConfig(R"({"devices":[{"core_id":[5]}]})"));
    EXPECT_EQ(first->getCoreId(), 3U);
    EXPECT_EQ(first->getProfilingLevel(), 7001U);
    EXPECT_EQ(second->getCoreId(), 5U);
    EXPECT_EQ(second->getProfilingLevel(), 0U);
}

TEST(Library, DestroyTakesNull) {
    const Library library(EXTENSIONS_LIBRARY);
    library.find<decltype(&destroyBackendInterface)>("destroyBackendInterface")(nullptr);
    EXPECT_NE(library.handle(), nullptr);
}

}  // namespace
