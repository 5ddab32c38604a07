// Units of work on disk.
//
// Every connection has a folder QM/.units/ID and, for as long as its process lives, the lock on
// QM/.units/ID.lock. Messages stand in it by what is to become of them, in a subfolder a queue:
//
//     got/QUEUE/NAME     got under syncpoint:      commit deletes, back-out returns with the count raised
//     taking/QUEUE/NAME  a get without syncpoint under way: returns as it was if the program dies
//     put/QUEUE/NAME     put and not yet available: commit makes it available, back-out deletes
//     done/QUEUE/NAME    gone for good, about to be deleted
//     open, or commit    a marker: while it is called commit, the commit of all of got and put is decided
//
// Invariants, whatever moment the process is killed at:
//   1. A message is one file; every move of it is one rename. It is in exactly one place.
//   2. A commit is decided in one step: renaming the marker, or, for a unit of a single message, the rename
//   of that
//      message (got to done, put to its queue). What is decided is finished by whoever comes next.
//   3. A unit whose lock is free belongs to nobody alive. Whoever finds it takes the lock, then finishes it
//   if it
//      is decided, else backs it out. Each step leaves the unit such that the whole can be begun again.
//   4. The back-out count is in the name and changes in the rename that returns the message: it is raised
//   exactly once.
//   5. A descriptor (QUEUE/.desc) is written before its message can be seen and deleted just before its file
//   is.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "spoolmq/os/os.h"

namespace spoolmq {

enum class UnitStage { Got, Taking, Put, Done };

struct UnitMember {
    UnitStage stage;  ///< Got or Put
    std::string queueFolder;
    std::string fileName;
};

struct Unit {
    std::string qmgrPath;
    std::string id;  ///< process id and a random number; empty when there is no unit folder
    OsFile presence = kNoFile;
    bool sync = false;  ///< force commits to the disk
    std::vector<UnitMember> members;
    std::unordered_set<std::string> madeFolders;
};

/// Makes the unit folder and its lock.
[[nodiscard]] OsStatus OpenUnit(const std::string& qmgrPath, Unit* unit);
/// Removes folder and lock. Whatever is still in the unit is left to the recovery of dead units.
void CloseUnit(Unit* unit);

/// Where a message of this queue and name stands in the unit; makes the folders on first use.
[[nodiscard]] OsStatus StagePath(Unit* unit, UnitStage stage, const std::string& queueFolder,
                                 const std::string& fileName, std::string* path);

/// Commits the members. Failed: nothing is decided and the unit is as before. Once decided the answer is Ok;
/// what could not be finished is left in a unit of its own for recovery, and *unit goes on with a fresh one.
/// *touched receives the queues that got messages, to be told to waiting readers.
[[nodiscard]] OsStatus CommitUnit(Unit* unit, std::vector<UnitMember>* published);
/// Backs out the members. On Failed the rest is left in a unit of its own for recovery; *unit goes on with a
/// fresh one. *returned receives the messages that are back.
[[nodiscard]] OsStatus BackOutUnit(Unit* unit, std::vector<UnitMember>* returned);

/// Deletes a message for good: its descriptor, then its file at `path`.
[[nodiscard]] OsStatus DeleteMessage(const std::string& qmgrPath, const std::string& queueFolder,
                                     const std::string& fileName, const std::string& path);
/// Renames the file at `path` back into its queue, with the back-out count raised by `raise`.
[[nodiscard]] OsStatus ReturnMessage(const std::string& qmgrPath, const std::string& queueFolder,
                                     const std::string& fileName, const std::string& path, int raise);

/// Puts every unit that belongs to nobody alive in order, see invariant 3. Cheap when there is none. A unit
/// that cannot be put in order stays for the next time.
/// Returns whether there was one.
bool RecoverDeadUnits(const std::string& qmgrPath, const std::string& ownId);

[[nodiscard]] std::string UnitsPath(const std::string& qmgrPath);
[[nodiscard]] const char* StageName(UnitStage stage);

}  // namespace spoolmq
