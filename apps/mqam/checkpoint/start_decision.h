// How a life of a restartable load begins: decided from the position that was stored and from what stands on
// the disk, before anything is changed, in one pure function. The caller tells the operator the decision,
// makes the repairs, then acts on it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mqam/checkpoint/scan.h"
#include "mqamod.h"

namespace mqam {

enum class StartAction {
    /// Nothing was stored and no records are waiting: Open, GetPos, Reads.
    kBegin,
    /// Open, SetPos with the stored position, Reads: the file's records come first.
    kReplay,
    /// A position is stored, but the file holds no record that has to come again (a rewrite was interrupted,
    /// or nothing was read
    /// since): Open without SetPos, GetPos, Reads. Everything up to the position is loaded and nothing was
    /// taken after it.
    kResume,
    /// Going on could lose or double records: reason says why and what the operator can do.
    kRefuse,
};

/// A change on the disk that completes what a crash interrupted. None destroys the only copy of a whole
/// record.
struct Repair {
    enum class Kind {
        kRenameTemporary,  ///< the rewrite was interrupted behind its deletion: `path` takes the checkpoint
                           ///< file's place
        kDeleteTemporary,  ///< the rewrite was interrupted before its deletion: `path` is incomplete or a
                           ///< copy
        kCutTornTail,      ///< the checkpoint file is cut to `bytes`: a record not wholly there was never
                           ///< committed
    };
    Kind kind = Kind::kRenameTemporary;
    std::string path;
    std::uint64_t bytes = 0;
};

struct StartDecision {
    StartAction action = StartAction::kRefuse;
    /// With kReplay: what SetPos is to be given. It is the stored position, but for one taken when a replay
    /// had just used up its file: that names the end of the file, and its offset is put back to the last
    /// record, which the module must have read again to know its redelivery by the queue.
    PositionData position = {};
    /// With kReplay: the first record replayed was delivered before the position was stored; it is checked
    /// and dropped.
    bool firstRecordIsRepeat = false;
    std::vector<Repair> repairs;  ///< to be made first, in order; none with kRefuse
    std::string reason;           ///< for the operator, for every action; with kRefuse it says what to do
    bool mayPass = false;         ///< with kRefuse: the system failed, nothing speaks against the files
};

/// Decides.
///   checkpointPath  the CKFILE of the load
///   stored          the position of the last checkpoint whose data is durable in the target; none before the
///   first file            the facts of the checkpoint file; of the temporary file that is to be renamed when
///   the file is missing
///                   and exactly one temporary file is there (its `path` tells)
///   temporaries     the temporary files beside it
[[nodiscard]] StartDecision DecideStart(const std::string& checkpointPath,
                                        const std::optional<PositionData>& stored, const CheckpointScan& file,
                                        const std::vector<std::string>& temporaries);

/// Makes one repair, synced to the medium. A temporary file is deleted only when the checkpoint file holds
/// its records, and a file is cut only where its whole records end. Returns false with the reason in words;
/// then nothing is changed, or the change is made and only its sync failed.
[[nodiscard]] bool MakeRepair(const std::string& checkpointPath, const Repair& repair, std::string& reason);

/// The repair in words: "rename MQAMtmp.4711 to load.ckpt (...)".
[[nodiscard]] std::string DescribeRepair(const std::string& checkpointPath, const Repair& repair);

}  // namespace mqam
