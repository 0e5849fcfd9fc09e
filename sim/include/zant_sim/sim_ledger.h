// What the simulated libraries share: each keeps a ledger of its calls and follows a script. All functions may be
// called from any thread; what they speak of is one for each loaded library.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {
#pragma GCC visibility push(default)

// The ledger: one line of text for each call, in order, as "operation(arguments) -> result". Wrong use fails the call
// and is told in a further line that begins with "misuse: ".
size_t ZantSim_ledgerSize();
// Writes entry index, cut to capacity and zero-terminated, and returns its whole length; 0 when there is none.
size_t ZantSim_ledgerEntry(size_t index, char* text, size_t capacity);
// Empties the ledger and puts every setting back to its start. What was made and not given back lives on.
void ZantSim_clear();
// Makes the nth call from now (1 is the next) of an operation fail and do nothing. n of 0 fails every call. status:
// what an operation with a status then answers.
void ZantSim_failNthCall(const char* operation, uint32_t n, uint64_t status);
// Makes every call of an operation take so long before it does anything; 0 takes the latency away.
void ZantSim_setLatency(const char* operation, uint32_t microseconds);
#pragma GCC visibility pop
}

using ZantSimLedgerSizeFn = decltype(&ZantSim_ledgerSize);
using ZantSimLedgerEntryFn = decltype(&ZantSim_ledgerEntry);
using ZantSimClearFn = decltype(&ZantSim_clear);
using ZantSimFailNthCallFn = decltype(&ZantSim_failNthCall);
using ZantSimSetLatencyFn = decltype(&ZantSim_setLatency);
