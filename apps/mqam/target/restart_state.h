// SPDX-License-Identifier: Apache-2.0

// Defines what a restartable load keeps from one attempt to the next, and its form on disk: lines of
// key=value that an operator can read, followed by a checksum. A text that is not exactly what
// FormatRestartState wrote is refused; nothing is guessed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mqam/base/status.h"
#include "mqamod.h"

namespace mqam {

enum class LoadPhase {
    kLoading,
    kFinished,  ///< every message is durable in the target; checkpoint file and log may still be there
    kComplete,  ///< they are deleted too: the state is a completion marker
};

/// Says how the previous attempt ended, if it ended with the end of the input.
enum class LastEnd {
    kNone,       ///< it did not get that far
    kEarly,      ///< the input ended before the read wait interval had passed
    kAfterWait,  ///< the queue had been empty for the read wait interval
};

struct RestartState {
    LoadPhase phase = LoadPhase::kLoading;

    // These members identify the load. Paths are absolute.
    std::string queueManager;
    std::string queue;
    std::string checkpointFile;
    std::string logFile;  ///< empty if there is none
    std::string target;
    std::string format;

    std::string begun;           ///< when the load began, in UTC
    std::uint64_t attempts = 0;  ///< attempts that stored a checkpoint

    // These members say what is durable in the target.
    std::uint64_t records = 0;
    std::uint64_t bytes = 0;         ///< the sum of the record lengths
    std::uint64_t targetLength = 0;  ///< including what was there before the load
    std::uint64_t lastRecordLength = 0;
    std::uint64_t lastRecordDigest = 0;
    std::optional<PositionData> position;

    LastEnd lastEnd = LastEnd::kNone;
    /// The number of records read up to that end, including those after the position.
    std::uint64_t lastEndRecords = 0;

    /// The command that ran the load last, for whoever resumes it: the current directory, and the arguments after the
    /// program's name. Empty if an earlier version stored the state.
    std::string directory;
    std::vector<std::string> command;
};

/// Returns whether a load has begun and is not over. Without a stored position nothing has been read, so the
/// load has not begun.
[[nodiscard]] bool IsUnfinished(const std::optional<RestartState>& state);
/// Returns whether every message of the load is in the target.
[[nodiscard]] bool IsOver(const std::optional<RestartState>& state);

[[nodiscard]] std::string FormatRestartState(const RestartState& state);

/// Parses the form on disk. The error (kRefused) says what is wrong with the text, for example "is cut short"; `state` is
/// then undefined.
Status ParseRestartState(const std::string& text, RestartState& state);

/// Returns the FNV-1a hash with 64 bits: it detects records that differ by accident, not by intent.
[[nodiscard]] std::uint64_t DigestOf(const char* bytes, std::size_t length);

}  // namespace mqam
