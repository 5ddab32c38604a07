// SPDX-License-Identifier: Apache-2.0

// Uses the journal of a checkpoint file (apps/mqjournal): what it says at the start of an attempt, and the journal
// library between the module and the MQ library. The journal is a synced copy of what may have been committed. If there
// is one, the checkpoint file is not looked at: a loss of power can have left anything in it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "mqam/base/status.h"
#include "mqam/checkpoint/scan.h"
#include "mqam/checkpoint/start_decision.h"
#include "mqjournal/journal/reader.h"

namespace mqam {

enum class Durability {
    kPower,    ///< each record is on the disk before its message is committed
    kProcess,  ///< each record is with the operating system before that
};

/// What the journal says about a load with a stored position.
struct StoredJournal {
    mqjournal::JournalScan journal;
    /// The scan of the checkpoint file as the journal has it; none if there is no journal or no position, and the
    /// checkpoint file itself is to be scanned.
    std::optional<CheckpointScan> content;
    /// With content: the file that the content was written to, because the checkpoint file differs; else empty.
    std::string restored;
};

/// Reads the journal of a checkpoint file. Changes nothing but the file "CKFILE.restored". kRefused if the journal is
/// damaged; kTransient if it, or the checkpoint file, cannot be read.
///   hasPosition  whether a position of the load is stored
Status ReadStoredJournal(const std::string& checkpointPath, bool hasPosition, std::uint64_t maxRecordBytes,
                         StoredJournal& stored);

/// Returns the refusal of a new load whose checkpoint file has a journal with content.
[[nodiscard]] Status RefuseStrayContent(const std::string& checkpointPath);

/// Makes the checkpoint file what the journal says, and deletes temporary checkpoint files that cannot have the only
/// copy of a record. Does nothing without content.
///   repaired  is called with a description if the checkpoint file was not as a crash of the process leaves it
Status RestoreFromJournal(const std::string& checkpointPath, const StoredJournal& stored,
                          const std::function<void(const std::string&)>& repaired);

/// Prepares the journal for an attempt that begins as decided, after the checkpoint file was restored and repaired and
/// before a position is stored. The module may have the file open.
/// With kPower the journal then has the content of the file, or none if the file's records do not count. With kProcess
/// the file is synced and the journal deleted.
Status PrepareJournal(const std::string& checkpointPath, const StoredJournal& stored, StartAction action,
                      Durability durability);

/// The paths of the files that belong to the journal of a checkpoint file, some of which may exist.
[[nodiscard]] std::vector<std::string> FilesOfJournal(const std::string& checkpointPath);

/// Returns the path of the journal library: in the directory of the program, or where it is installed.
[[nodiscard]] std::string FindJournalLibrary();

/// Makes the module load the journal library, and that the MQ library that the module would have loaded.
void UseJournalLibrary(const std::string& library, const std::string& checkpointPath);

/// Returns the last error of the journal library, which this process has loaded; empty if there was none.
[[nodiscard]] std::string LastJournalError(const std::string& library);

}  // namespace mqam
