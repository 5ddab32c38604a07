#include "mqam/checkpoint/start_decision.h"

#include <algorithm>

#include "platform/disk_changes.h"

namespace mqam {

namespace {

std::string Show(const std::string& path) {
    return "`mqam checkpoint show " + path + "`";
}

std::string ToRepair(const std::string& path) {
    return "look with " + Show(path) + ", then `mqam checkpoint repair " + path + "`";
}

std::string CountRecords(std::size_t count) {
    return count == 1 ? "1 record" : std::to_string(count) + " records";
}

StartDecision Refuse(const std::string& reason) {
    StartDecision decision;
    decision.reason = reason;
    return decision;
}

// An append that was cut short leaves nothing behind it: anything else is damage, and a replay would stop at
// it or go past records.
StartDecision RefuseDamage(const CheckpointScan& file) {
    std::string reason = file.path + " is damaged: ";
    if (file.damagedLengthAt != 0) {
        reason += "a bit of the record length at offset " + std::to_string(file.damagedLengthAt) +
                  " seems to be wrong, without which whole records would lead to the end of the file";
    } else {
        reason += "the record length at offset " + std::to_string(file.intactBytes) + " " +
                  (file.impossibleLengthAt != 0 ? "is larger than any record (--max-record)"
                                                : "leads past the end of it");
        if (file.resyncOffset != 0) {
            reason += ", but whole records are found from offset " + std::to_string(file.resyncOffset) +
                      " to its end";
        }
    }
    return Refuse(reason + "; keep a copy of the file and see what is intact with `mqam checkpoint verify " +
                  file.path + "`; give back an undamaged copy and run the same command again");
}

bool IsDamaged(const CheckpointScan& file) {
    return file.impossibleLengthAt != 0 || file.resyncOffset != 0;
}

void CutTornTail(const CheckpointScan& file, StartDecision& decision) {
    if (file.fileBytes == file.intactBytes || file.intactBytes == 0) return;
    decision.repairs.push_back({Repair::Kind::kCutTornTail, file.path, file.intactBytes});
}

// Nothing is stored. The module makes temporary files only while a stored position is gone back to.
StartDecision DecideBeginning(const CheckpointScan& file, const std::vector<std::string>& temporaries) {
    if (!temporaries.empty()) {
        return Refuse("no position is stored, but the temporary checkpoint file " + temporaries.front() +
                      " may hold records of another load: give each load a folder of its own, or give the "
                      "restart information of that load back and run its command; " +
                      Show(file.path) + " tells what the files hold");
    }
    if (file.shape == CheckpointShape::kRecords) {
        return Refuse(
            file.path + " holds " + CountRecords(file.records.size()) +
            ", perhaps their only copies, but no position is stored: it belongs to another load, or "
            "the restart information of this load is gone; give that back and run the same command again, "
            "or name another checkpoint file (" +
            Show(file.path) + " tells what it holds)");
    }
    if (IsDamaged(file)) return RefuseDamage(file);
    StartDecision decision;
    decision.action = StartAction::kBegin;
    decision.reason = "nothing is stored and no record waits in " + file.path + ": the load begins";
    CutTornTail(file, decision);
    return decision;
}

StartDecision Replay(const PositionData& position, const CheckpointScan& file, std::size_t firstRecord,
                     const std::string& checkpointPath) {
    StartDecision decision;
    decision.action = StartAction::kReplay;
    decision.position = position;
    decision.firstRecordIsRepeat = position.CkPtMsgCount != 0;
    const std::size_t coming = file.records.size() - firstRecord;
    decision.reason =
        "the load goes on behind checkpoint " + std::to_string(position.CkPtSeq) + ": " + checkpointPath;
    if (!decision.firstRecordIsRepeat) {
        decision.reason += " gives " + CountRecords(coming) + " again, then the queue is read";
    } else if (coming == 1) {
        decision.reason += " gives back the last record loaded, to be compared, then the queue is read";
    } else {
        decision.reason += " gives back the last record loaded, to be compared, and " +
                           CountRecords(coming - 1) + " behind it, then the queue is read";
    }
    return decision;
}

// The checkpoint file is missing and this temporary file is the only one. Only a whole one of the very
// checkpoint that was stored is what a rewrite leaves between its deletion and its rename.
StartDecision DecideFromTemporary(const std::string& checkpointPath, const PositionData& stored,
                                  const CheckpointScan& temporary) {
    const std::string missing = checkpointPath + " is missing and the temporary checkpoint file " +
                                temporary.path + " cannot take its place: ";
    if (temporary.shape == CheckpointShape::kMissing) return Refuse(missing + "it is gone, too");
    if (temporary.shape != CheckpointShape::kRecords || temporary.fileBytes != temporary.intactBytes) {
        return Refuse(missing +
                      "it is incomplete, so the checkpoint file was removed by something else; give the "
                      "checkpoint file back and run the same command again (" +
                      Show(checkpointPath) + " tells what is there)");
    }
    if (temporary.sequence != stored.CkPtSeq) {
        return Refuse(missing + "it belongs to checkpoint " + std::to_string(temporary.sequence) +
                      ", the stored position to checkpoint " + std::to_string(stored.CkPtSeq) +
                      "; give the checkpoint file back and run the same command again (" +
                      Show(checkpointPath) + " tells what is there)");
    }
    StartDecision decision = Replay(stored, temporary, 0, checkpointPath);
    decision.repairs.push_back({Repair::Kind::kRenameTemporary, temporary.path});
    return decision;
}

StartDecision RefuseMissing(const std::string& checkpointPath, const std::vector<std::string>& temporaries) {
    if (temporaries.empty()) {
        return Refuse(checkpointPath +
                      " is missing although a position is stored: the records that came after the position "
                      "were in it; give the file back, at this path, and run the same command again");
    }
    return Refuse(checkpointPath + " is missing and there are " + std::to_string(temporaries.size()) +
                  " temporary checkpoint files, so it cannot be known which of them takes its place; " +
                  ToRepair(checkpointPath));
}

// No whole record is in the file. Everything up to the position is loaded; the header tells whether an
// interrupted rewrite, or a start that read nothing, left it so.
StartDecision DecideWithoutRecords(const PositionData& stored, const CheckpointScan& file) {
    const bool nothingRead = stored.CkPtMsgCount == 0;
    if (file.shape == CheckpointShape::kHeaderOnly && !nothingRead && file.sequence != stored.CkPtSeq) {
        return Refuse(file.path + " holds no record and belongs to checkpoint " +
                      std::to_string(file.sequence) + ", the stored position to checkpoint " +
                      std::to_string(stored.CkPtSeq) +
                      ": it has lost its records, or it is another load's; give the right file back and run "
                      "the same command again");
    }
    StartDecision decision;
    decision.action = StartAction::kResume;
    decision.reason = "the load goes on behind checkpoint " + std::to_string(stored.CkPtSeq) + ": " +
                      file.path + " holds no record that has to come again, so the queue is read at once";
    CutTornTail(file, decision);
    return decision;
}

// The file belongs to the checkpoint before: the stored one was not carried out.
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
                  " of the file begins; the file or the position is another load's or a backup; give the "
                  "right file back and run the same command again (" +
                  Show(file.path) + " tells what it holds)");
}

StartDecision DecideWithRecords(const PositionData& stored, const CheckpointScan& file) {
    const auto ahead = static_cast<std::int64_t>(file.sequence) - stored.CkPtSeq;
    if (ahead == 0) return Replay(stored, file, 0, file.path);
    if (ahead == -1) return DecideByOffset(stored, file);
    const std::string both = file.path + " belongs to checkpoint " + std::to_string(file.sequence) +
                             ", the stored position to checkpoint " + std::to_string(stored.CkPtSeq) + ": ";
    if (ahead > 0) {
        return Refuse(
            both +
            "the file has moved on, so a newer position was stored somewhere or the file is another "
            "load's; give the newer restart file or the right checkpoint file back and run the same "
            "command again");
    }
    return Refuse(both +
                  "the file is older than the position, another load's or a backup; give the right file back "
                  "and run the same command again");
}

}  // namespace

StartDecision DecideStart(const std::string& checkpointPath, const std::optional<PositionData>& stored,
                          const CheckpointScan& file, const std::vector<std::string>& temporaries) {
    if (file.shape == CheckpointShape::kUnreadable) {
        StartDecision decision = Refuse(file.path + " cannot be read: " + file.reason +
                                        "; make it readable and run the same command again");
        decision.mayPass = true;
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
        return Refuse(checkpointPath + " holds no record, but the temporary checkpoint file " +
                      temporaries.front() + " may hold the only copies: another program has made " +
                      checkpointPath + " anew; " + ToRepair(checkpointPath));
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

bool MakeRepair(const std::string& checkpointPath, const Repair& repair, std::string& reason) {
    if (repair.kind == Repair::Kind::kRenameTemporary) {
        return platform::RenameDurably(repair.path, checkpointPath, reason);
    }
    const CheckpointScan file = ScanCheckpointFile(checkpointPath, kLargestRecordBytes);
    if (repair.kind == Repair::Kind::kCutTornTail) {
        if (file.intactBytes == repair.bytes && !IsDamaged(file)) {
            return platform::TruncateDurably(checkpointPath, repair.bytes, reason);
        }
        reason = checkpointPath + " has changed meanwhile and is not cut";
        return false;
    }
    const CheckpointScan temporary = ScanCheckpointFile(repair.path, kLargestRecordBytes);
    if (temporary.shape == CheckpointShape::kMissing) return true;
    if (!IsCopyOfRecords(temporary, file, reason)) {
        if (reason.empty()) {
            reason = repair.path + " holds records that " + checkpointPath +
                     " does not hold, and is not deleted; " + ToRepair(checkpointPath);
        }
        return false;
    }
    return platform::DeleteDurably(repair.path, reason);
}

std::string DescribeRepair(const std::string& checkpointPath, const Repair& repair) {
    switch (repair.kind) {
        case Repair::Kind::kRenameTemporary:
            return "rename " + repair.path + " to " + checkpointPath +
                   " (a rewrite was interrupted behind its deletion of the checkpoint file)";
        case Repair::Kind::kDeleteTemporary:
            return "delete " + repair.path +
                   " (a rewrite was interrupted; its records are in the checkpoint file)";
        case Repair::Kind::kCutTornTail:
            return "cut " + checkpointPath + " to " + std::to_string(repair.bytes) +
                   " bytes (a record not wholly there was never committed: it is still on the queue)";
    }
    return "";
}

}  // namespace mqam
