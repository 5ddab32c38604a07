// SPDX-License-Identifier: Apache-2.0

// Decides how an attempt of a restartable load starts, in one pure function, from the stored position and the
// files on disk, before anything is changed. The caller reports the decision, makes the repairs, then acts on
// it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "mqam/checkpoint/scan.h"
#include "mqamod.h"

namespace mqam {

enum class StartAction {
    /// Nothing is stored and no records are waiting: Open, GetPos, Reads.
    kBegin,
    /// Open, SetPos with the stored position, Reads: the records of the file come first.
    kReplay,
    /// A position is stored, but the file has no record to replay, because a rewrite was interrupted or nothing has
    /// been read since: Open without SetPos, GetPos, Reads. Everything up to the position is loaded, and nothing
    /// after it was taken from the queue.
    kResume,
    /// Resuming could lose or duplicate records: the message says why, and what the operator can do.
    kRefuse,
};

/// A change on disk that completes what a crash interrupted. No such change destroys the only copy of a
/// complete record.
struct Repair {
    enum class Kind {
        /// A rewrite was interrupted after it deleted the checkpoint file: the file at `path` takes its place.
        kRenameTemporary,
        /// A rewrite was interrupted before it deleted the checkpoint file: the file at `path` is incomplete or a
        /// copy.
        kDeleteTemporary,
        /// The checkpoint file is truncated to `bytes`: an incomplete record was never committed.
        kCutTornTail,
    };
    Kind kind = Kind::kRenameTemporary;
    std::string path;
    std::uint64_t bytes = 0;
};

struct StartDecision {
    StartAction action = StartAction::kRefuse;
    /// With kReplay: the position for SetPos. It is the stored position, with one exception: a position taken when a
    /// replay had just used up its file names the end of the file. Its offset is moved back to the last record,
    /// because the module must have read that record again to recognise its redelivery by the queue.
    PositionData position = {};
    /// With kReplay: the first record replayed was delivered before the position was stored. It is compared and
    /// dropped.
    bool firstRecordIsRepeat = false;
    std::uint64_t replayedRecords =
        0;  ///< with kReplay: how many records the file returns after SetPos, at least 1
    std::vector<Repair> repairs;  ///< to be made first, in this order; none with kRefuse
    std::string message;          ///< for the operator, for every action; with kRefuse it says what to do
    bool isTransient = false;     ///< with kRefuse: the system failed, and nothing is wrong with the files
};

/// Decides how to start.
///   checkpointPath  the CKFILE of the load
///   stored          the position of the last checkpoint whose data is durable in the target; none before the first
///   file            the scan of the checkpoint file; or, if that is missing and exactly one temporary file exists,
///                   the scan of the temporary file, which is then to be renamed (its `path` says which it is)
///   temporaries     the paths of the temporary files
[[nodiscard]] StartDecision DecideStart(const std::string& checkpointPath,
                                        const std::optional<PositionData>& stored, const CheckpointScan& file,
                                        const std::vector<std::string>& temporaries);

/// Advises the operator to look at the checkpoint file and repair it by hand.
[[nodiscard]] std::string HowToRepair(const std::string& checkpointPath);

}  // namespace mqam
