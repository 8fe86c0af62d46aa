// frameutil/platform.h - what the library offers a process as a whole: its start and end
// (frameutil/start.h), its white list (frameutil/white_list.h), the REST groups it serves
// (frameutil/restgroup.h), memory for small blocks, the flag word, and how large the
// managed network is.
//
//     char* text = static_cast<char*>(FrameUtil::Malloc(12));
//     ...
//     FrameUtil::Free(text, 12);      // the size goes back with the block
//
// Thread rule: thread-safe. Nothing here throws.
#pragma once

#include "frameutil/export.h"
#include "frameutil/restgroup.h"
#include "frameutil/start.h"
#include "frameutil/white_list.h"

namespace FrameUtil {

// ---- small blocks
//
// Blocks of up to 128 bytes come from 32 pools, one for each block size 4, 8, 12, ... 128;
// larger ones from the system's malloc. A pool takes memory in chunks, each with twice the
// blocks of the one before, and gives all its chunks back when its last block returns. So
// a single block that is taken and returned over and over costs a chunk each time, and one
// block that is kept makes the pool keep all it has.
//
// The pools are there before any static object is built and until the process ends. They
// serve the child of a fork as well.

/// A block of at least `size` bytes, aligned to 8 (above 128: as malloc aligns), its
/// contents unspecified. A size of 0 gets a block like any other.
///
/// Null: out of memory. A pool that could not get a chunk counts the block as handed out
/// all the same, deliberately: from then on its last block never returns, and it keeps its
/// chunks until the process ends.
FRAMEUTIL_API void* Malloc(unsigned long size) noexcept;

/// Returns a block of Malloc(). `size` must be the size that it was asked for with: a
/// block does not know its pool, and one that gets into another pool corrupts both. A null
/// pointer does nothing.
///
/// A build of the library without NDEBUG checks both: a block returned with another size,
/// returned twice or never handed out is logged as an error ("[Free] ...") with its address
/// and sizes, and ends the process by abort().
FRAMEUTIL_API void Free(void* p, unsigned long size) noexcept;

/// What a pool holds at one moment.
struct BlockPoolState {
    unsigned long block_size;         ///< bytes; 0: no pool serves the size asked about
    long in_use;                      ///< blocks handed out and not returned
    unsigned long chunks;             ///< chunks taken from the system
    unsigned long blocks;             ///< blocks in those chunks, in use or not
    unsigned long bytes;              ///< bytes of those chunks, with 16 of bookkeeping each
    unsigned long next_chunk_blocks;  ///< blocks of the chunk that is taken next
};

/// The pool that serves blocks of `size` bytes; above 128 all members are 0. Reading walks
/// the chunks, of which there are few, while the pool waits.
FRAMEUTIL_API BlockPoolState GetBlockPoolState(unsigned long size) noexcept;

// ---- the flag word

/// Bit 0: the operation log reports failed operations to the call chain.
inline constexpr unsigned int FLAG_CALL_CHAIN = 1;

/// Replaces the library's flag word, which is 0 at load. Bits other than FLAG_CALL_CHAIN
/// are kept and mean nothing to the library. Should the word's lock not be had, errno says
/// why and the word is replaced all the same.
FRAMEUTIL_API void SetFlag(unsigned int flags) noexcept;

/// The flag word.
FRAMEUTIL_API unsigned int GetFlag() noexcept;

// ---- the size of the managed network

/// The size in the environment variable "MGMTSIZE", a decimal number: 80000 when it is not
/// set, 2000 when it is below that or no number. Its low 32 bits count, as a signed number:
/// 3000000000 is negative, and so 2000. The process must not change its environment
/// meanwhile. Every call traces what it found.
FRAMEUTIL_API int GetMGMTSize();

/// How many worker threads the process `procId` (0: the calling process) gets for that
/// size: 100, 70, 60 or 10 for processes 3001 and 3006, 50, 30, 20 or 10 for others, from
/// 300000, from 150000, from 80000 and below. Traced as well.
FRAMEUTIL_API int GetFrameTaskMgrMaxThreadNum(unsigned short procId);

}  // namespace FrameUtil
