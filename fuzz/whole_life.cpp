#include "whole_life.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "buffers/darlink_library.h"
#include "platform/dynamic_loader.h"

namespace fuzz {
namespace {

zant::test::FakeDarlink& darlink() {
    static zant::test::FakeDarlink* const state = [] {
        // Documents name files, which are made where they are looked for.
        if (mkdir(FUZZ_MACHINE "/files", 0755) != 0 && errno != EEXIST) std::abort();
        if (chdir(FUZZ_MACHINE "/files") != 0) std::abort();
        setenv("ZELMAR_PLATFORM_ROOT", FUZZ_MACHINE, 1);
        setenv("windir", FUZZ_MACHINE "/windows", 1);
        const std::string path = zant::kor::DarlinkLibrary::defaultPath();
        void* library = zant::loader::dlOpen(path.c_str(), zant::loader::DL_NOW | zant::loader::DL_LOCAL);
        const auto find =
            reinterpret_cast<decltype(&fakeDarlinkState)>(zant::loader::dlSym(library, "fakeDarlinkState"));
        if (find == nullptr) std::abort();
        return find();
    }();
    return *state;
}

[[noreturn]] void giveUp(const char* hook, const std::string& document) {
    (void)std::fprintf(stderr, "%s: a failure without a line, or something left behind\n%s\n", hook, document.c_str());
    std::abort();
}

}  // namespace

void live(const std::string& document, zant::test::Road road) {
    zant::test::Neighbours neighbours(darlink());
    zant::test::ModelLife life(zant::test::linkedFactory(), document.c_str(), "p");
    life.run(road);
    // A hook may refuse what the document asks for, and then says why; loadConfig passes some members' refusal on
    // without a line.
    if (life.isLoaded() && life.silentFailures() != 0) giveUp(life.firstFailed(), document);
    life.destroy();
    if (neighbours.liveTensors() != 0 || neighbours.liveBlocks() != 0) giveUp("destroy", document);
}

}  // namespace fuzz
