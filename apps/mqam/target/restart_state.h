// What a restartable load keeps between two lives, and its form on disk: lines of key=value that an operator
// can read, closed by a checksum. A text that is not exactly what FormatRestartState wrote is refused, never
// guessed at.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "mqamod.h"

namespace mqam {

enum class LoadPhase {
    kLoading,
    kFinished,  ///< every message is durable in the target; checkpoint file and log may still be there
    kComplete,  ///< and they are gone: the state is a receipt
};

/// How the last life that ended by itself ended.
enum class LastEnd {
    kNone,       ///< the life before did not get so far
    kEarly,      ///< at an end of input that came before the read wait interval had passed
    kAfterWait,  ///< the queue had been empty for the read wait interval
};

struct RestartState {
    LoadPhase phase = LoadPhase::kLoading;

    // Whose state this is. Paths are absolute.
    std::string queueManager;
    std::string queue;
    std::string checkpointFile;
    std::string logFile;  ///< empty without one
    std::string target;
    std::string format;

    std::string begun;        ///< when, in UTC
    std::uint64_t lives = 0;  ///< that got as far as to store something

    // What is durable in the target.
    std::uint64_t records = 0;
    std::uint64_t bytes = 0;         ///< of the records
    std::uint64_t targetLength = 0;  ///< of the target, what stood there before the load included
    std::uint64_t lastRecordLength = 0;
    std::uint64_t lastRecordDigest = 0;
    std::optional<PositionData> position;

    LastEnd lastEnd = LastEnd::kNone;
    std::uint64_t lastEndRecords = 0;  ///< records read up to that end, those behind the position included
};

/// Whether a stored state is of a load that has begun and is not over. One in which no position was stored
/// yet has read nothing: it is not yet begun.
[[nodiscard]] bool IsUnfinished(const std::optional<RestartState>& state);
[[nodiscard]] bool IsOver(const std::optional<RestartState>& state);

[[nodiscard]] std::string FormatRestartState(const RestartState& state);

/// Returns false with what is wrong with the text ("is cut short", "is damaged: ..."); `state` is then
/// undefined.
[[nodiscard]] bool ParseRestartState(const std::string& text, RestartState& state, std::string& reason);

/// FNV-1a of 64 bits: tells records apart that differ by chance, not by design.
[[nodiscard]] std::uint64_t DigestOf(const char* bytes, std::size_t length);

}  // namespace mqam
