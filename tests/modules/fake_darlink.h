// The RPC client library as tests load it: blocks are plain memory, descriptors are numbers from 100.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zant::test {

struct FakeDarlink {
    struct Block {
        void* address;
        uint32_t size;
        int fileDescriptor;
    };
    std::vector<Block> blocks;  // those that live
    int blocksMade = 0;
    int (*descriptor)(int usual) = nullptr;          // may answer another one
    bool (*allow)(const char* operation) = nullptr;  // asked before each call, null: all are allowed
    bool failAlloc = false;
    bool failToFd = false;
};

}  // namespace zant::test

#if defined(_WIN32)
#define FAKE_DARLINK_EXPORT __declspec(dllexport)
#else
#define FAKE_DARLINK_EXPORT __attribute__((visibility("default")))
#endif

extern "C" FAKE_DARLINK_EXPORT zant::test::FakeDarlink* fakeDarlinkState();
