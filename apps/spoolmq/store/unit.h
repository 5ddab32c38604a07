// SPDX-License-Identifier: Apache-2.0

// Keeps units of work on disk.
//
// Every connection has a directory QM/.units/ID and, as long as its process lives, the lock
// QM/.units/ID.lock. The messages of the unit are in that directory, in one subdirectory for each stage and
// queue. The stage says what will happen to a message:
//
//     got/QUEUE/NAME     got under syncpoint: a commit deletes it, a back-out returns it and raises its count
//     taking/QUEUE/NAME  being got without syncpoint: returned unchanged if the process dies
//     put/QUEUE/NAME     put under syncpoint: a commit makes it available, a back-out deletes it
//     done/QUEUE/NAME    committed, about to be deleted
//
// The directory also holds an empty file, the marker. Its name is "open", or "commit" while a commit of
// everything in got and put is decided and not yet finished.
//
// Invariants, whenever the process is killed:
//   1. A message is one file, and each move of it is one rename. It is in exactly one place.
//   2. A commit is decided by a single rename: that of the marker, or, in a unit of one message, that of the
//      message itself (from got to done, or from put to its queue). A decided commit is finished by whoever
//      comes next.
//   3. A unit whose lock is free belongs to a dead process. Whoever finds it acquires the lock, then finishes
//      the commit if it is decided, otherwise backs out the unit. Each step leaves the unit in a state from
//      which all of this can be done again.
//   4. The back-out count is part of the file name and is raised by the rename that returns the message: it
//      is raised exactly once.
//   5. A descriptor (QUEUE/.desc) is written before its message becomes visible and deleted just before its
//      message is. A message without one would look like a copied-in file; between the two deletions it is
//      already out of its queue.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "platform/lock.h"
#include "spoolmq/base/status.h"

namespace spoolmq {

enum class UnitStage { kGot, kTaking, kPut, kDone };

struct UnitMember {
    UnitStage stage = UnitStage::kGot;
    std::string queueDirectory;
    std::string fileName;
};

struct Unit {
    std::string qmgrPath;
    std::string id;  ///< process id and a random number; empty if there is no directory
    platform::LockHandle processLock = platform::kNoLock;
    bool sync = false;                ///< commits are forced to the disk
    bool isRollbackOnly = false;      ///< the unit can only be backed out; a back-out resets this
    std::vector<UnitMember> members;  ///< the messages in the stages got and put
    std::unordered_set<std::string> createdDirectories;
};

/// Creates the unit's directory and its lock.
[[nodiscard]] FileStatus OpenUnit(const std::string& qmgrPath, Unit& unit);
/// Removes the unit's directory and lock. If the directory is not empty, it is left to RecoverDeadUnits.
void CloseUnit(Unit& unit);

/// Sets `path` to where the member's file is, or is to be, in the unit. Creates the directories on first use.
[[nodiscard]] FileStatus MakeMemberPath(Unit& unit, const UnitMember& member, std::string& path);

/// Commits the members. On any failure nothing is decided and the unit is as before. Once the commit is
/// decided the status is kOk; what could not be finished then stays, as a unit of its own, for recovery, and
/// `unit` continues with a new directory. `published` receives the messages that became available.
[[nodiscard]] FileStatus CommitUnit(Unit& unit, std::vector<UnitMember>& published);
/// Backs out the members. Returns kFailed if some of them could not be backed out: they stay, as a unit of
/// their own, for recovery, and `unit` continues with a new directory. `returned` receives the messages that
/// are back in their queues.
[[nodiscard]] FileStatus BackOutUnit(Unit& unit, std::vector<UnitMember>& returned);

/// Deletes a message whose file is at `path`: first its descriptor, then the file.
[[nodiscard]] FileStatus DeleteMessage(const std::string& qmgrPath, const UnitMember& message,
                                       const std::string& path);

enum class BackoutCount { kKeep, kRaise };

/// Moves a message whose file is at `path` back into its queue.
[[nodiscard]] FileStatus ReturnMessage(const std::string& qmgrPath, const UnitMember& message,
                                       const std::string& path, BackoutCount count);

/// Finishes or backs out every unit of a dead process (invariant 3). This costs little if there is no such
/// unit. A unit for which it fails stays until the next time. Returns whether a unit of a dead process was
/// found.
bool RecoverDeadUnits(const std::string& qmgrPath, const std::string& ownId);

[[nodiscard]] std::string UnitsPath(const std::string& qmgrPath);
[[nodiscard]] const char* StageName(UnitStage stage);

}  // namespace spoolmq
