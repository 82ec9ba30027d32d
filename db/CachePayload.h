#pragma once

#include "db/DbRecords.h"

#include <cstddef>
#include <span>

// The rule by which payloads are compressed into rows and come back out. Pure functions on bytes: run them before a
// guard is taken, never under it. Any thread.
namespace qfc {

// Compresses into a buffer of exactly the raw size; when that does not succeed (the bytes do not shrink, or there is no
// compressor or no memory) the payload is to be stored raw. The result borrows `bytes`. More bytes than
// kLargestPayload give a size of -1, which no write accepts.
PayloadWrite PackPayload(int kind, std::span<const std::byte> bytes);

// Whether the sizes of a row agree with its bytes. Ask before a buffer of rawSize bytes is made: false for a size of 0
// or below or above kLargestPayload, no bytes, fewer bytes than the compressed size, a compressed frame that announces
// another size than the row or one that so few bytes cannot hold, and raw bytes of more than the raw size.
bool PayloadIsSound(const StoredPayload& row);

// Brings a sound row's payload into `target`, which must be of rawSize bytes. Raw bytes that fall short of it leave the
// rest zero. False when the row is not sound or does not decompress to exactly its raw size; `target` is undefined
// then. Throws std::bad_alloc when there is no memory to begin with.
bool UnpackPayload(const StoredPayload& row, std::span<std::byte> target);

}  // namespace qfc
