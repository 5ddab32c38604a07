// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/start_decision.h"

#include <algorithm>

#include "mqam/checkpoint/damage.h"

namespace mqam {

namespace {

std::string Show(const std::string& path) {
    return "`mqam checkpoint show " + path + "`";
}

std::string CountRecords(std::size_t count) {
    return count == 1 ? "1 record" : std::to_string(count) + " records";
}

constexpr char kOrAcceptLoss[] = ", or add --accept-loss to continue without the records that are lost";

StartDecision Refuse(const std::string& message) {
    StartDecision decision;
    decision.message = message;
    return decision;
}

std::string AtOffset(std::uint64_t offset) {
    return "offset " + std::to_string(offset);
}

// Says where the chain of lengths breaks.
std::string DescribeDamage(const CheckpointScan& file) {
    if (HasNoSequence(file)) return "its sequence number is 0, which no checkpoint has";
    if (file.filler) {
        return NameFiller(*file.filler) + " take the place of records from " + AtOffset(file.intactBytes) +
               " to " + (file.filler->to == file.fileBytes ? "the end" : AtOffset(file.filler->to));
    }
    if (file.damagedLengthAt != 0) {
        return "one bit of the record length at " + AtOffset(file.damagedLengthAt) +
               " seems to be wrong; with it corrected, complete records would lead to the end of the file";
    }
    return "the record length at " + AtOffset(file.intactBytes) + " " +
           (file.impossibleLengthAt != 0 ? "is larger than any record (--max-record)"
            : file.emptyLengthAt != 0    ? "is 0"
                                         : "leads past the end of the file");
}

// An append that was cut short is the end of the file. Anything after it means damage, and a replay would stop there or
// skip records.
StartDecision RefuseDamage(const CheckpointScan& file) {
    std::string message = file.path + " is damaged: " + DescribeDamage(file);
    if (file.resyncOffset != 0 && file.damagedLengthAt == 0) {
        message += ", but complete records are found from " + AtOffset(file.resyncOffset) + " to its end";
    }
    const Loss loss = EstimateLoss(file);
    if (loss.to != 0) {
        const auto isIntact = [&loss](const ScannedRecord& record) { return record.offset < loss.from; };
        const auto before = std::count_if(file.records.begin(), file.records.end(), isIntact);
        const std::size_t intact = static_cast<std::size_t>(before) + file.recordsAfter.size();
        message +=
            "; " + CountRecords(intact) + (intact == 1 ? " is" : " are") + " intact, " + DescribeLoss(loss);
    }
    return Refuse(message + "; keep a copy of the file and see what is intact with `mqam checkpoint verify " +
                  file.path + "`; restore an undamaged copy and run the same command again" + kOrAcceptLoss);
}

void CutTornTail(const CheckpointScan& file, StartDecision& decision) {
    if (file.fileBytes == file.intactBytes || file.intactBytes == 0) return;
    decision.repairs.push_back({Repair::Kind::kCutTornTail, file.path, file.intactBytes});
}

// Nothing is stored. The module makes temporary files only while it replays from a stored position.
StartDecision DecideBeginning(const CheckpointScan& file, const std::vector<std::string>& temporaries) {
    if (!temporaries.empty()) {
        return Refuse(
            "no position is stored, but the temporary checkpoint file " + temporaries.front() +
            " may contain records of another load: give each load a directory of its own, or restore "
            "the restart information of that load and run its command; " +
            Show(file.path) + " shows what the files contain");
    }
    if (file.shape == CheckpointShape::kRecords) {
        return Refuse(
            file.path + " contains " + CountRecords(file.records.size()) +
            ", possibly the only copies, but no position is stored: the file belongs to another load, or "
            "the restart information of this load is gone; restore that and run the same command again, "
            "or name another checkpoint file (" +
            Show(file.path) + " shows what it contains)");
    }
    if (IsDamaged(file)) return RefuseDamage(file);
    StartDecision decision;
    decision.action = StartAction::kBegin;
    decision.message = "nothing is stored and no record waits in " + file.path + ": a new load begins";
    CutTornTail(file, decision);
    return decision;
}

StartDecision Replay(const PositionData& position, const CheckpointScan& file, std::size_t firstRecord,
                     const std::string& checkpointPath) {
    StartDecision decision;
    decision.action = StartAction::kReplay;
    decision.position = position;
    decision.firstRecordIsRepeat = position.CkPtMsgCount != 0;
    const std::size_t replayed = file.records.size() - firstRecord;
    decision.replayedRecords = replayed;
    decision.message =
        "the load resumes after checkpoint " + std::to_string(position.CkPtSeq) + ": " + checkpointPath;
    if (!decision.firstRecordIsRepeat) {
        decision.message += " replays " + CountRecords(replayed) + ", then the queue is read";
    } else if (replayed == 1) {
        decision.message += " returns the last record loaded, to be compared, then the queue is read";
    } else {
        decision.message += " returns the last record loaded, to be compared, and replays " +
                            CountRecords(replayed - 1) + " after it, then the queue is read";
    }
    return decision;
}

// The checkpoint file is missing and this temporary file is the only one. Between its deletion and its rename, a
// rewrite leaves only a complete file of the very checkpoint that was stored.
StartDecision DecideFromTemporary(const std::string& checkpointPath, const PositionData& stored,
                                  const CheckpointScan& temporary) {
    const std::string missing = checkpointPath + " is missing and the temporary checkpoint file " +
                                temporary.path + " cannot take its place: ";
    if (temporary.shape == CheckpointShape::kMissing) return Refuse(missing + "it is gone too");
    if (temporary.shape != CheckpointShape::kRecords || temporary.fileBytes != temporary.intactBytes) {
        return Refuse(missing +
                      "it is incomplete, so something else removed the checkpoint file; restore the "
                      "checkpoint file and run the same command again (" +
                      Show(checkpointPath) + " shows what is there)");
    }
    if (temporary.sequence != stored.CkPtSeq) {
        return Refuse(missing + "it belongs to checkpoint " + std::to_string(temporary.sequence) +
                      ", the stored position to checkpoint " + std::to_string(stored.CkPtSeq) +
                      "; restore the checkpoint file and run the same command again (" +
                      Show(checkpointPath) + " shows what is there)");
    }
    StartDecision decision = Replay(stored, temporary, 0, checkpointPath);
    decision.repairs.push_back({Repair::Kind::kRenameTemporary, temporary.path});
    return decision;
}

StartDecision RefuseMissing(const std::string& checkpointPath, const std::vector<std::string>& temporaries) {
    if (temporaries.empty()) {
        return Refuse(
            checkpointPath +
            " is missing although a position is stored: it contained the records that came after the "
            "position; restore the file at this path and run the same command again" +
            kOrAcceptLoss);
    }
    return Refuse(checkpointPath + " is missing and there are " + std::to_string(temporaries.size()) +
                  " temporary checkpoint files, so it cannot be known which of them replaces it; " +
                  HowToRepair(checkpointPath));
}

// The file has no complete record. Everything up to the position is loaded; the header shows whether an interrupted
// rewrite, or a start that read nothing, left it so.
StartDecision DecideWithoutRecords(const PositionData& stored, const CheckpointScan& file) {
    const bool nothingRead = stored.CkPtMsgCount == 0;
    if (file.shape == CheckpointShape::kHeaderOnly && !nothingRead && file.sequence != stored.CkPtSeq) {
        return Refuse(file.path + " contains no record and belongs to checkpoint " +
                      std::to_string(file.sequence) + ", the stored position to checkpoint " +
                      std::to_string(stored.CkPtSeq) +
                      ": it has lost its records, or it is another load's; restore the right file and run "
                      "the same command again");
    }
    StartDecision decision;
    decision.action = StartAction::kResume;
    decision.message = "the load resumes after checkpoint " + std::to_string(stored.CkPtSeq) + ": " +
                       file.path + " has no record to replay, so the queue is read immediately";
    CutTornTail(file, decision);
    return decision;
}

// The file belongs to the previous checkpoint: the stored one was not carried out.
StartDecision DecideByOffset(PositionData position, const CheckpointScan& file) {
    const auto offset = static_cast<std::uint64_t>(position.CkPtOffset);
    const auto record = std::find_if(file.records.begin(), file.records.end(),
                                     [offset](const ScannedRecord& fact) { return fact.offset == offset; });
    if (position.CkPtMsgCount != 0 && record != file.records.end()) {
        return Replay(position, file, static_cast<std::size_t>(record - file.records.begin()), file.path);
    }
    if (position.CkPtMsgCount != 0 && offset == file.intactBytes) {
        position.CkPtOffset = static_cast<std::int64_t>(file.records.back().offset);
        return Replay(position, file, file.records.size() - 1, file.path);
    }
    return Refuse(file.path + " does not fit the stored position: checkpoint " +
                  std::to_string(position.CkPtSeq) + " names offset " + std::to_string(position.CkPtOffset) +
                  ", where no record" + (position.CkPtMsgCount == 0 ? " loaded" : "") +
                  " of the file begins; the file or the position is another load's or a backup; restore "
                  "the right file and run the same command again (" +
                  Show(file.path) + " shows what it contains)");
}

StartDecision DecideWithRecords(const PositionData& stored, const CheckpointScan& file) {
    const auto ahead = static_cast<std::int64_t>(file.sequence) - stored.CkPtSeq;
    if (ahead == 0) return Replay(stored, file, 0, file.path);
    if (ahead == -1) return DecideByOffset(stored, file);
    const std::string both = file.path + " belongs to checkpoint " + std::to_string(file.sequence) +
                             ", the stored position to checkpoint " + std::to_string(stored.CkPtSeq) + ": ";
    if (ahead > 0) {
        return Refuse(both +
                      "the file is newer, so a newer position was stored somewhere, or the file is another "
                      "load's; restore the newer restart file or the right checkpoint file and run the same "
                      "command again");
    }
    return Refuse(both +
                  "the file is older than the position, another load's or a backup; restore the right file "
                  "and run the same command again");
}

}  // namespace

std::string HowToRepair(const std::string& path) {
    return "look at " + Show(path) + ", then run `mqam checkpoint repair " + path + "`";
}

StartDecision DecideStart(const std::string& checkpointPath, const std::optional<PositionData>& stored,
                          const CheckpointScan& file, const std::vector<std::string>& temporaries) {
    if (file.shape == CheckpointShape::kUnreadable) {
        StartDecision decision = Refuse(file.path + " cannot be read: " + file.error +
                                        "; make it readable and run the same command again");
        decision.isTransient = true;
        return decision;
    }
    if (!stored) {
        CheckpointScan named = file;
        named.path = checkpointPath;
        return DecideBeginning(named, temporaries);
    }
    if (temporaries.size() == 1 && file.path == temporaries.front()) {
        return DecideFromTemporary(checkpointPath, *stored, file);
    }
    if (file.shape == CheckpointShape::kMissing) return RefuseMissing(checkpointPath, temporaries);
    if (file.shape != CheckpointShape::kRecords && !temporaries.empty()) {
        return Refuse(checkpointPath + " contains no record, but the temporary checkpoint file " +
                      temporaries.front() + " may contain the only copies: another program has recreated " +
                      checkpointPath + "; " + HowToRepair(checkpointPath));
    }
    if (IsDamaged(file)) return RefuseDamage(file);
    StartDecision decision = file.shape == CheckpointShape::kRecords ? DecideWithRecords(*stored, file)
                                                                     : DecideWithoutRecords(*stored, file);
    if (decision.action != StartAction::kReplay) return decision;
    for (const std::string& temporary : temporaries) {
        decision.repairs.push_back({Repair::Kind::kDeleteTemporary, temporary});
    }
    CutTornTail(file, decision);
    return decision;
}

}  // namespace mqam
