#include "mqam/load/stored_load.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "mqam/checkpoint/scan.h"
#include "mqam/checkpoint/start_decision.h"
#include "mqam/module/position_text.h"
#include "mqam/target/target_kind.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "recovery/checkpoint_records.h"

namespace mqam {

namespace {

struct CloseStream {
    void operator()(std::FILE* stream) const { (void)std::fclose(stream); }
};

bool ReadBody(const std::string& path, const ScannedRecord& record, std::vector<char>& body) {
    const std::unique_ptr<std::FILE, CloseStream> stream(std::fopen(path.c_str(), "rb"));
    body.resize(static_cast<std::size_t>(record.length));
    return stream != nullptr &&
           platform::MoveStreamTo(stream.get(), record.offset + mqamod::kRecordLengthBytes) &&
           mqamod::ReadRecordBody(stream.get(), body.data(), record.length).complete;
}

bool Complain(std::string& reason, const std::string& words) {
    reason = words;
    return false;
}

}  // namespace

bool ReadStateOfLoad(const std::string& restartFile, const std::string& checkpointPath, RestartState& state,
                     std::string& reason) {
    std::optional<RestartState> stored;
    const TargetKind& kind = FindTargetKind(restartFile);
    const Status read = kind.readState(restartFile, stored);
    if (!read.IsOk()) return Complain(reason, read.Error());
    const std::string what = std::string(kind.stateNoun) + " " + restartFile;
    if (!stored) return Complain(reason, what + " is missing");
    state = *stored;
    if (state.checkpointFile != platform::AbsolutePath(checkpointPath)) {
        return Complain(reason, what + " belongs to the load with checkpoint file " + state.checkpointFile +
                                    ", not " + platform::AbsolutePath(checkpointPath) +
                                    (state.position ? "; to look at a copy of that file give --position " +
                                                          FormatPosition(*state.position)
                                                    : ""));
    }
    if (state.phase != LoadPhase::kLoading) {
        return Complain(reason, "the load of " + what + " is over: every record is in " + state.target +
                                    ", and no checkpoint file belongs to it any more");
    }
    return true;
}

std::string FindForeignRecord(const std::string& checkpointPath, const RestartState& state,
                              std::uint64_t maxRecordBytes) {
    const std::vector<std::string> temporaries = FindTemporaryFiles(checkpointPath);
    const CheckpointScan facts = ScanForStart(checkpointPath, temporaries, maxRecordBytes);
    const StartDecision decision = DecideStart(checkpointPath, state.position, facts, temporaries);
    if (decision.action != StartAction::kReplay || !decision.firstRecordIsRepeat) return "";
    // The module, too, looks for the offset only in the file of the checkpoint before.
    const bool fromBeginning = facts.sequence == decision.position.CkPtSeq;
    const auto offset = static_cast<std::uint64_t>(decision.position.CkPtOffset);
    const auto first =
        std::find_if(facts.records.begin(), facts.records.end(),
                     [&](const ScannedRecord& record) { return fromBeginning || record.offset == offset; });
    std::vector<char> body;
    if (first == facts.records.end() || !ReadBody(facts.path, *first, body)) return "";
    if (body.size() == state.lastRecordLength &&
        DigestOf(body.data(), body.size()) == state.lastRecordDigest) {
        return "";
    }
    return "the record at offset " + std::to_string(first->offset) + " of " + facts.path +
           " is not the last one loaded: the checkpoint file or the restart file is another load's or a "
           "backup; restore the right file";
}

}  // namespace mqam
