// Whether a checkpoint file is intact, to the byte, and what about that can be known at all.
#pragma once

#include <string>

#include "apps/mqam/checkpoint_facts.h"

enum class Soundness {
    kIntact,
    kIncomplete,  ///< as a crash in the middle of a write leaves it
    kDamaged,     ///< as no crash leaves it
};

/// Requires a file that could be read.
[[nodiscard]] Soundness JudgeSoundness(const CheckpointFacts& facts);

/// The verdict, what each range of bytes is, and what cannot be known: whole lines.
///   maxRecordBytes  the limit with which the file was looked into
[[nodiscard]] std::string DescribeSoundness(const CheckpointFacts& facts, std::uint64_t maxRecordBytes);
