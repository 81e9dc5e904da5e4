#pragma once

#include "scansqlite/sieve/header_sieve.h"

// What one sweep works on, as bare pointers: the files of the levels are compiled for their own
// instruction set, and shared inline code must not be instantiated there.
struct SieveJob {
  const NibbleSet* sets;
  const HeaderSieve* sieves;
  size_t sieve_count;
  const uint8_t* bytes;  // readable for a block and a byte more than `blocks`
  size_t blocks;
  uint64_t* words;  // of the first sieve, then of the second, `blocks` each
  uint64_t* marks;  // a bit for each word that may not be 0, `marks_of_sieve` for each sieve
  size_t marks_of_sieve;
  const SieveAnchor* anchors;
  size_t anchor_count;
  uint64_t* anchor_words;  // room for one word more than `blocks`
  uint64_t* padded;        // the same
  uint64_t* hot_blocks;    // the same
};

// The same sweep for each instruction set; every level gives the same words. The vector forms
// may only be called on machines that have the instructions.
void SieveWords(const SieveJob& job);
void SieveSsse3(const SieveJob& job);
void SieveAvx2(const SieveJob& job);
