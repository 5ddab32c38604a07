// SPDX-License-Identifier: Apache-2.0

// A target that a load can be restarted into: it keeps the restart state together with the records, so that the two
// agree after a crash.
//
// The order of calls in an attempt, which holds the lock of attempts: LoadState; RollBackTo, or for a new load CheckNew
// and, once the queue is open, Begin; Puts, with a Store after some of them; at the end StoreEnd or Store. After a Put or Store that failed, no other of
// these calls may follow. All calls come from one thread.
//
// Errors: kRefused means that the target does not fit the load and someone has to decide; kTransient that the system
// failed and a later attempt may succeed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mqam/base/status.h"
#include "mqam/target/load_locks.h"
#include "mqam/target/load_places.h"
#include "mqam/target/path_conflict.h"
#include "mqam/target/restart_state.h"

namespace mqam {

class Target {
  public:
    Target() = default;
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    virtual ~Target() = default;

    /// Reads the stored state, or none if nothing is stored. It needs no lock.
    virtual Status LoadState(std::optional<RestartState>& state) = 0;

    /// Returns whether a new load would find records of an earlier one: the target exists and is not empty,
    /// or cannot be read, and the user did not say that the load may add to it.
    [[nodiscard]] virtual bool IsOccupied() = 0;

    /// Refuses a target that a new load cannot use: above all one that is occupied, unless the user said what to do with
    /// it. It changes nothing.
    virtual Status CheckNew() = 0;

    /// Begins a load in the target. It sets the state's targetLength, makes the state durable, which has the first
    /// position, and makes the target ready for records. What the target contained before is removed only after the
    /// state is durable, or in the same instant. It refuses what CheckNew refuses.
    virtual Status Begin(RestartState& state) = 0;

    /// Removes what the state does not count and makes the target ready for records. Refuses a target that does not
    /// end with the last record that the state counts.
    virtual Status RollBackTo(const RestartState& state) = 0;

    /// Reads the last record that the state counts, which has at least one byte. Changes nothing. Refuses a target that
    /// does not have it.
    virtual Status ReadLastRecord(const RestartState& state, std::vector<char>& record) = 0;

    /// Puts one record; the bytes are not kept.
    virtual Status Put(const char* record, std::size_t length) = 0;

    /// Returns the length of the target with everything put so far, in the unit of the state's targetLength.
    [[nodiscard]] virtual std::uint64_t Length() const = 0;

    /// Makes everything put so far durable, and after that, or in the same instant, the state that counts it.
    virtual Status Store(const RestartState& state) = 0;

    /// Deletes the stored state, durably. What is in the target stays.
    virtual Status ForgetState() = 0;

    /// Makes a state durable that does not count the records put since the last Store. No Put may follow.
    virtual Status StoreEnd(const RestartState& state) = 0;

    /// These name the target, the format of its records, and the place of its state, as the user knows them.
    [[nodiscard]] virtual const std::string& Name() const = 0;
    [[nodiscard]] virtual std::string Format() const = 0;
    /// Returns how many of the records put since the target was opened look like several in the file.
    [[nodiscard]] virtual std::uint64_t RecordsWithLineFeeds() const { return 0; }
    [[nodiscard]] virtual const std::string& StateName() const = 0;

    /// The load's own directory, and where its files are unless the user named another place.
    [[nodiscard]] virtual const LoadPlaces& Places() const = 0;

    /// Acquires a lock of the load, waiting up to `timeoutSeconds` for its holder to end. It is released by
    /// ReleaseLock, or when the process ends. kRefused means that another load holds it. The command's lock creates
    /// the load's directory, and its release removes what a load that is not unfinished needs no more.
    virtual Status AcquireLock(TargetLock lock, int timeoutSeconds);
    virtual void ReleaseLock(TargetLock lock);

    /// Returns the files of the target and its state, including the locks; none for a target without local
    /// files.
    [[nodiscard]] virtual std::vector<LoadFile> Files() const = 0;
};

}  // namespace mqam
