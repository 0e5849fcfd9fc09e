// The simulated backend's control surface: what a host or a test asks of it besides the contract.
//
// The library also exports ZantInterface_getProviders, as any backend does, and the ledger of sim_ledger.h. Everything
// here is reached by dlsym; the *Fn types name what is found. All functions may be called from any thread. State is one
// for each loaded library. ZantSim_clear also empties the time line of votes. For ZantSim_failNthCall operations have
// the names of their fields in ZantProviderRecord and ZantPerfInfrastructure, or the names below without "ZantSim_", or
// "getProviders", which then lists nothing.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zant_sim/sim_ledger.h"
#include "zelmar_kor/memory_records.h"
#include "zelmar_kor/power_records.h"
#include "zelmar_kor/provider_record.h"

constexpr size_t ZANT_SIM_VOTE_RECORDS = 16;
constexpr size_t ZANT_SIM_THREAD_NAME = 16;

// One list of records that setPowerConfig took, whole. Without records: the id was destroyed, and its vote ended.
struct ZantSimVote {
    uint64_t sequence;  // place in the time line
    uint64_t timeNs;    // since the backend's first call, when the list took effect
    uint32_t thread;    // as ZantSim_threadNumber
    uint32_t powerConfigId;
    uint32_t deviceId;
    uint32_t coreId;
    uint32_t recordCount;
    char threadName[ZANT_SIM_THREAD_NAME];
    PowerConfigRecord records[ZANT_SIM_VOTE_RECORDS];
};

// What a context wants from outside, in bytes, and how many buffers of its own can be detached.
struct ZantSimContextBuffers {
    uint64_t spillFillSize;
    uint64_t weightsSize;
    uint64_t spadBackupSize;
    uint32_t detachableCount;
};

// A context of ZantSim_createContextsFromBinaryList: its own config list and, when all were made, its handle.
struct ZantSimContextRequest {
    const char* key;
    ZantConfigWrapper** configs;
    uint32_t count;
    void* context;
};

// A region of memory that is registered with a living context.
struct ZantSimRegion {
    void* handle;
    void* context;
    uint32_t bufferType;  // ZantSharedBufferType
    int32_t fileDescriptor;
    uint64_t offset;
    uint64_t size;  // of a tensor its data's, else the whole block's
};

extern "C" {
#pragma GCC visibility push(default)

// The backend version that getApiVersion answers; 5.51.0 at the start.
void ZantSim_setApiVersion(uint32_t major, uint32_t minor, uint32_t patch);
// The backend ids of the provider records, in order, 4 at most; a decoy 3 and then 6 at the start. The operations of
// the record at position p write "provider p: " before their ledger line when p is not that of the first 6.
void ZantSim_setProviders(const uint32_t* backendIds, size_t count);

// What the next contexts answer, in the order in which they are made; a detachable buffer only when their config asks
// for them. Contexts beyond the list, and all without one, answer sizes that grow from context to context.
void ZantSim_setContextBuffers(const ZantSimContextBuffers* list, size_t count);
// What every context answers when it is asked for its number of detachable buffers, until ZantSim_clear.
void ZantSim_setDetachableAnswer(int64_t answer);

// Wrong use of votes: an id that was never made or is destroyed, a list that is null or empty or has no null after at
// most 16 records, a record of an unknown option, for another id or with words beyond its own. Ids left over when the
// last device is freed count too; the device is freed all the same. Id 0 is the default client's, always there, and
// destroying it ends its vote.
//
// Wrong use of contexts and memory: a handle that was never made or is gone, a config record of an unknown option, of
// an option that its list holds already or with values that the option does not have, a descriptor that is not what it
// has to be, a region that does not lie within its memory, a run of a context whose buffers are detached, whose changed
// buffers were not finalised or whose registered memory is gone. Regions end with their context; of tensors left over
// the ledger has a line, which is no misuse.

// The time line of votes, in the order in which they took effect.
size_t ZantSim_voteCount();
// Fills in entry index and returns 1; 0 when there is none.
uint32_t ZantSim_vote(size_t index, ZantSimVote* vote);
// The newest list of a living id that held corners, and 1; 0 when there is none. Lists of settings alone, such as the
// polling time, replace no vote.
uint32_t ZantSim_currentVote(uint32_t powerConfigId, ZantSimVote* vote);
// How many ids were made and not destroyed.
size_t ZantSim_livePowerConfigIds();
// Nanoseconds since the backend's first call, the time line's clock; 0 before it.
uint64_t ZantSim_elapsedNs();
// The calling thread's number: 1, 2, ... in the order in which threads were first seen.
uint32_t ZantSim_threadNumber();
// Its name as votes carry it: cut to what fits, and empty when it has none.
void ZantSim_threadName(char name[ZANT_SIM_THREAD_NAME]);

// What a host does with a real backend's own functions. Config lists go with a count; a null handle is a failure.
// Handles are numbers that are never reused and never point at anything.
uint64_t ZantSim_createDevice(ZantConfigWrapper** configs, uint32_t count, void** device);
uint64_t ZantSim_freeDevice(void* device);
uint64_t ZantSim_createContext(void* device, ZantConfigWrapper** configs, uint32_t count, void** context);
uint64_t ZantSim_createContextFromBinary(void* device, ZantConfigWrapper** configs, uint32_t count, void** context);
// Makes all of the contexts, or none. common: the config list for all.
uint64_t ZantSim_createContextsFromBinaryList(void* device, ZantSimContextRequest* requests, uint32_t requestCount,
                                              ZantConfigWrapper** common, uint32_t commonCount);
uint64_t ZantSim_freeContext(void* context);
// configs: null, or a list that ends in a null pointer. The context is one that was made without a binary.
uint64_t ZantSim_createGraph(void* context, const char* name, ZantConfigWrapper** configs, void** graph);
// The graph of that name in a context that was made from a binary, which holds any that it is asked for.
uint64_t ZantSim_retrieveGraph(void* context, const char* name, void** graph);
uint64_t ZantSim_finalizeGraph(void* graph);
uint64_t ZantSim_executeGraph(void* graph, ZantConfigWrapper** configs, uint32_t count);

// The registered regions, oldest first.
size_t ZantSim_regionCount();
// Fills in entry index and returns 1; 0 when there is none.
uint32_t ZantSim_region(size_t index, ZantSimRegion* region);
// The first bytes of a region as the device sees them, through the descriptor; 0 for success.
uint64_t ZantSim_readRegion(const void* handle, void* bytes, size_t count);
uint64_t ZantSim_writeRegion(const void* handle, const void* bytes, size_t count);
// How many buffers of a living context are detached just now.
uint32_t ZantSim_detachedBuffers(const void* context);
#pragma GCC visibility pop
}

using ZantSimVoteCountFn = decltype(&ZantSim_voteCount);
using ZantSimVoteFn = decltype(&ZantSim_vote);
using ZantSimCurrentVoteFn = decltype(&ZantSim_currentVote);
using ZantSimLivePowerConfigIdsFn = decltype(&ZantSim_livePowerConfigIds);
using ZantSimElapsedNsFn = decltype(&ZantSim_elapsedNs);
using ZantSimThreadNumberFn = decltype(&ZantSim_threadNumber);
using ZantSimThreadNameFn = decltype(&ZantSim_threadName);
using ZantSimSetApiVersionFn = decltype(&ZantSim_setApiVersion);
using ZantSimSetProvidersFn = decltype(&ZantSim_setProviders);
using ZantSimCreateDeviceFn = decltype(&ZantSim_createDevice);
using ZantSimFreeDeviceFn = decltype(&ZantSim_freeDevice);
using ZantSimCreateContextFn = decltype(&ZantSim_createContext);
using ZantSimFreeContextFn = decltype(&ZantSim_freeContext);
using ZantSimCreateGraphFn = decltype(&ZantSim_createGraph);
using ZantSimFinalizeGraphFn = decltype(&ZantSim_finalizeGraph);
using ZantSimExecuteGraphFn = decltype(&ZantSim_executeGraph);
using ZantSimSetContextBuffersFn = decltype(&ZantSim_setContextBuffers);
using ZantSimSetDetachableAnswerFn = decltype(&ZantSim_setDetachableAnswer);
using ZantSimCreateContextFromBinaryFn = decltype(&ZantSim_createContextFromBinary);
using ZantSimCreateContextsFromBinaryListFn = decltype(&ZantSim_createContextsFromBinaryList);
using ZantSimRetrieveGraphFn = decltype(&ZantSim_retrieveGraph);
using ZantSimRegionCountFn = decltype(&ZantSim_regionCount);
using ZantSimRegionFn = decltype(&ZantSim_region);
using ZantSimReadRegionFn = decltype(&ZantSim_readRegion);
using ZantSimWriteRegionFn = decltype(&ZantSim_writeRegion);
using ZantSimDetachedBuffersFn = decltype(&ZantSim_detachedBuffers);
