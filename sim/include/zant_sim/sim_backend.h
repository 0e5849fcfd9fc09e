// The simulated backend's control surface: what a host or a test asks of it besides the contract.
//
// The library also exports ZantInterface_getProviders, as any backend does. Everything here is reached by dlsym; the
// *Fn types name what is found. All functions may be called from any thread. State is one for each loaded library.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zelmar_kor/provider_record.h"

extern "C" {
#pragma GCC visibility push(default)

// The ledger: one line of text for each call, in order, as "operation(arguments) -> result".
size_t ZantSim_ledgerSize();
// Writes entry index, cut to capacity and zero-terminated, and returns its whole length; 0 when there is none.
size_t ZantSim_ledgerEntry(size_t index, char* text, size_t capacity);
// Empties the ledger and puts every setting below back to its start.
void ZantSim_clear();

// Makes the nth call from now (1 is the next) of an operation return status and do nothing. Operations have the
// names of their fields in ZantProviderRecord and ZantPerfInfrastructure, or the names below without "ZantSim_", or
// "getProviders", which then lists nothing. n of 0 fails every call.
void ZantSim_failNthCall(const char* operation, uint32_t n, uint64_t status);
// The backend version that getApiVersion answers; 5.51.0 at the start.
void ZantSim_setApiVersion(uint32_t major, uint32_t minor, uint32_t patch);
// The backend ids of the provider records, in order, 4 at most; a decoy 3 and then 6 at the start. The operations of
// the record at position p write "provider p: " before their ledger line when p is not that of the first 6.
void ZantSim_setProviders(const uint32_t* backendIds, size_t count);

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
using ZantSimSetApiVersionFn = decltype(&ZantSim_setApiVersion);
using ZantSimSetProvidersFn = decltype(&ZantSim_setProviders);
using ZantSimCreateDeviceFn = decltype(&ZantSim_createDevice);
using ZantSimFreeDeviceFn = decltype(&ZantSim_freeDevice);
using ZantSimCreateContextFn = decltype(&ZantSim_createContext);
using ZantSimFreeContextFn = decltype(&ZantSim_freeContext);
using ZantSimCreateGraphFn = decltype(&ZantSim_createGraph);
using ZantSimFinalizeGraphFn = decltype(&ZantSim_finalizeGraph);
using ZantSimExecuteGraphFn = decltype(&ZantSim_executeGraph);
