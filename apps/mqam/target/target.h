// A target that a load can be restarted into: it keeps the restart state together with the records, so that
// after a crash both tell the same.
//
// The order of calls in a life, which holds a lock: LoadState, then for a new load Begin, then RollBackTo, Puts
// with a Store after some of them, at the end StoreEnd or Store. Every call returns false on failure with
// words for the user in Failure(); after a failed Put or Store nothing but Failure() and Refuses() may be
// called. Called from one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mqam/target/path_conflict.h"
#include "mqam/target/restart_state.h"

namespace mqam {

class Target {
  public:
    Target() = default;
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    virtual ~Target() = default;

    /// Reads the stored state, none when nothing is stored. Does not need a lock.
    [[nodiscard]] virtual bool LoadState(std::optional<RestartState>& state) = 0;

    /// Tells whether a new load would find records of an earlier one in its way: the target exists and holds
    /// something, and the user did not say that the load may add to it.
    [[nodiscard]] virtual bool IsOccupied() = 0;

    /// Makes a first state durable, before anything of the target is touched. Refuses a target that is
    /// occupied, unless the user said to replace it. Fills targetLength of the state.
    [[nodiscard]] virtual bool Begin(RestartState& state) = 0;

    /// Cuts off what the state does not count and makes the target ready for records. Refuses a target that
    /// does not end with the last record that the state counts.
    [[nodiscard]] virtual bool RollBackTo(const RestartState& state) = 0;

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

    /// The file whose lock keeps one command after the other away from target and state, and the one that
    /// does so with the lives of a command.
    [[nodiscard]] virtual std::string CommandLock() const = 0;
    [[nodiscard]] virtual std::string AttemptLock() const = 0;

    /// The files that target and state are kept in, and those beside them, the locks included.
    [[nodiscard]] virtual std::vector<LoadFile> Files() const = 0;

    [[nodiscard]] const std::string& Failure() const { return failure_; }
    /// Of the last failure: it stays until somebody changes something; else the system failed, and time may
    /// heal that.
    [[nodiscard]] bool Refuses() const { return refuses_; }

  protected:
    [[nodiscard]] bool Refuse(const std::string& words) { return End(words, true); }
    [[nodiscard]] bool Fail(const std::string& words) { return End(words, false); }

  private:
    [[nodiscard]] bool End(const std::string& words, bool refuses) {
        failure_ = words;
        refuses_ = refuses;
        return false;
    }

    std::string failure_;
    bool refuses_ = false;
};

}  // namespace mqam
