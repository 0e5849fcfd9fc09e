// The control surface of the simulated RPC client library, beside its three operations of memory_records.h and the
// ledger of sim_ledger.h.
//
// Each block is shared memory of its own. Its descriptor is a real one of this process, which darmem_free closes; on
// Windows it is the number of the file mapping's handle. Operations have their own names for ZantSim_failNthCall: a
// failed darmem_alloc gives null, a failed darmem_to_fd -1, and a failed darmem_free does nothing. Wrong use is an
// address that is no living block's, and another heap or other flags than the contract's.
#pragma once

#include "zant_sim/sim_ledger.h"
#include "zelmar_kor/memory_records.h"

struct ZantSimBlock {
    void* address;
    uint64_t size;    // as asked for; the memory reaches to the end of its last page
    uint32_t number;  // 1, 2, ... in the order in which blocks were made, by which the ledger names them
    int32_t fileDescriptor;
};

extern "C" {
#pragma GCC visibility push(default)
void* darmem_alloc(int heapId, uint32_t flags, uint32_t size);
void darmem_free(void* address);
int darmem_to_fd(void* address);

// The living blocks, oldest first.
size_t ZantSim_blockCount();
// Fills in entry index and returns 1; 0 when there is none.
uint32_t ZantSim_block(size_t index, ZantSimBlock* block);
#pragma GCC visibility pop
}

using ZantSimBlockCountFn = decltype(&ZantSim_blockCount);
using ZantSimBlockFn = decltype(&ZantSim_block);
