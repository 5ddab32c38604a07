// A target that a load can be restarted into: it keeps the restart state together with the records, so that
// after a crash both tell the same.
//
// The order of calls in a life: Lock, LoadState, then for a new load Begin, then CutBack, Puts with a Store
// after some of them, at the end StoreEnd or Store. Every call returns false on failure with words for the
// user in Failure(); after a failed Put or Store nothing but Failure() may be called. Called from one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/mqam/restart_state.h"

class RestartableTarget {
  public:
    RestartableTarget() = default;
    RestartableTarget(const RestartableTarget&) = delete;
    RestartableTarget& operator=(const RestartableTarget&) = delete;
    virtual ~RestartableTarget() = default;

    /// Keeps every other load away from target and state until Unlock or the end of the process. Waits some
    /// seconds for a load that is just ending.
    [[nodiscard]] virtual bool Lock() = 0;
    virtual void Unlock() = 0;

    /// Reads the stored state, none when nothing is stored. Does not need the lock.
    [[nodiscard]] virtual bool LoadState(std::optional<RestartState>& state) = 0;

    /// Tells whether a new load would find records of an earlier one in its way: the target exists and holds
    /// something, and the user did not say that the load may add to it.
    [[nodiscard]] virtual bool IsOccupied() = 0;

    /// Makes a first state durable, before anything of the target is touched. Refuses a target that is
    /// occupied, unless the user said to replace it. Fills targetLength of the state.
    [[nodiscard]] virtual bool Begin(RestartState& state) = 0;

    /// Cuts off what the state does not count and makes the target ready for records.
    [[nodiscard]] virtual bool CutBack(const RestartState& state) = 0;

    /// Takes one record; the bytes are not kept.
    [[nodiscard]] virtual bool Put(const char* record, std::size_t length) = 0;

    /// The length of the target with everything put so far, as the state counts it.
    [[nodiscard]] virtual std::uint64_t Length() const = 0;

    /// Makes everything put so far durable, and then, or at the same instant, the state that counts it.
    [[nodiscard]] virtual bool Store(const RestartState& state) = 0;

    /// Makes a state durable that does not count the records put since the last Store. No Put may follow.
    [[nodiscard]] virtual bool StoreEnd(const RestartState& state) = 0;

    /// The target, the form of its records, and where its state is kept, as the user knows them.
    [[nodiscard]] virtual const std::string& Name() const = 0;
    [[nodiscard]] virtual std::string Format() const = 0;
    [[nodiscard]] virtual const std::string& StateName() const = 0;

    /// Absolute paths of the files that target and state are kept in.
    [[nodiscard]] virtual std::vector<std::string> Files() const = 0;

    [[nodiscard]] virtual const std::string& Failure() const = 0;
};
