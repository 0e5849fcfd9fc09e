// The simulated backend's control surface: what a host or a test asks of it besides the contract.
//
// The library also exports ZantInterface_getProviders, as any backend does. Everything here is reached by dlsym; the
// *Fn types name what is found. All functions may be called from any thread. State is one for each loaded library.
#pragma once

#include <cstddef>
#include <cstdint>

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

extern "C" {
#pragma GCC visibility push(default)

// The ledger: one line of text for each call, in order, as "operation(arguments) -> result".
size_t ZantSim_ledgerSize();
// Writes entry index, cut to capacity and zero-terminated, and returns its whole length; 0 when there is none.
size_t ZantSim_ledgerEntry(size_t index, char* text, size_t capacity);
// Empties the ledger and the time line of votes, and puts every setting below back to its start. Power config ids
// live on.
void ZantSim_clear();

// Makes the nth call from now (1 is the next) of an operation return status and do nothing. Operations have the
// names of their fields in ZantProviderRecord and ZantPerfInfrastructure, or the names below without "ZantSim_", or
// "getProviders", which then lists nothing. n of 0 fails every call.
void ZantSim_failNthCall(const char* operation, uint32_t n, uint64_t status);
// Makes every call of an operation take so long before it does anything; 0 takes the latency away.
void ZantSim_setLatency(const char* operation, uint32_t microseconds);
// The backend version that getApiVersion answers; 5.51.0 at the start.
void ZantSim_setApiVersion(uint32_t major, uint32_t minor, uint32_t patch);
// The backend ids of the provider records, in order, 4 at most; a decoy 3 and then 6 at the start. The operations of
// the record at position p write "provider p: " before their ledger line when p is not that of the first 6.
void ZantSim_setProviders(const uint32_t* backendIds, size_t count);

// Wrong use is answered with a failing status and a further ledger line that begins with "misuse: ": an id that was
// never made or is destroyed, a list that is null or empty or has no null after at most 16 records, a record of an
// unknown option, for another id or with words beyond its own. Ids left over when the last device is freed get such a
// line too; the device is freed all the same. Id 0 is the default client's, always there, and destroying it ends its
// vote.

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

// What a host does with a real backend's own functions. Config lists go with a count; a null handle is a failure.
// Handles are numbers that are never reused and never point at anything.
uint64_t ZantSim_createDevice(ZantConfigWrapper** configs, uint32_t count, void** device);
uint64_t ZantSim_freeDevice(void* device);
uint64_t ZantSim_createContext(void* device, ZantConfigWrapper** configs, uint32_t count, void** context);
uint64_t ZantSim_freeContext(void* context);
// configs: null, or a list that ends in a null pointer.
uint64_t ZantSim_createGraph(void* context, const char* name, ZantConfigWrapper** configs, void** graph);
uint64_t ZantSim_finalizeGraph(void* graph);
uint64_t ZantSim_executeGraph(void* graph, ZantConfigWrapper** configs, uint32_t count);
#pragma GCC visibility pop
}

using ZantSimLedgerSizeFn = decltype(&ZantSim_ledgerSize);
using ZantSimLedgerEntryFn = decltype(&ZantSim_ledgerEntry);
using ZantSimClearFn = decltype(&ZantSim_clear);
using ZantSimFailNthCallFn = decltype(&ZantSim_failNthCall);
using ZantSimSetLatencyFn = decltype(&ZantSim_setLatency);
using ZantSimVoteCountFn = decltype(&ZantSim_voteCount);
using ZantSimVoteFn = decltype(&ZantSim_vote);
using ZantSimCurrentVoteFn = decltype(&ZantSim_currentVote);
using ZantSimLivePowerConfigIdsFn = decltype(&ZantSim_livePowerConfigIds);
using ZantSimElapsedNsFn = decltype(&ZantSim_elapsedNs);
using ZantSimThreadNumberFn = decltype(&ZantSim_threadNumber);
using ZantSimSetApiVersionFn = decltype(&ZantSim_setApiVersion);
using ZantSimSetProvidersFn = decltype(&ZantSim_setProviders);
using ZantSimCreateDeviceFn = decltype(&ZantSim_createDevice);
using ZantSimFreeDeviceFn = decltype(&ZantSim_freeDevice);
using ZantSimCreateContextFn = decltype(&ZantSim_createContext);
using ZantSimFreeContextFn = decltype(&ZantSim_freeContext);
using ZantSimCreateGraphFn = decltype(&ZantSim_createGraph);
using ZantSimFinalizeGraphFn = decltype(&ZantSim_finalizeGraph);
using ZantSimExecuteGraphFn = decltype(&ZantSim_executeGraph);
