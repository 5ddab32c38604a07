// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/stored_load.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "mqam/checkpoint/scan.h"
#include "mqam/checkpoint/start_decision.h"
#include "mqam/module/position_text.h"
#include "mqam/target/target_kind.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/stream.h"
#include "recovery/checkpoint_records.h"

namespace mqam {

namespace {

bool ReadBody(const std::string& path, const ScannedRecord& record, std::vector<char>& body) {
    const platform::Stream stream(std::fopen(path.c_str(), "rb"));
    body.resize(static_cast<std::size_t>(record.length));
    return stream != nullptr &&
           platform::MoveStreamTo(stream.get(), record.offset + mqamod::kRecordLengthBytes) &&
           mqamod::ReadRecordBody(stream.get(), body.data(), record.length).complete;
}

}  // namespace

Status ReadStateOfLoad(const std::string& place, const std::string& checkpointPath, RestartState& state) {
    std::optional<RestartState> stored;
    const TargetKind& kind = FindTargetKind(place);
    Status read = kind.readState(place, stored);
    if (!read.IsOk()) return read;
    const std::string what = std::string(kind.stateNoun) + " " + place;
    if (!stored) return Status::Refused(what + " is missing");
    state = *stored;
    if (state.checkpointFile != platform::AbsolutePath(checkpointPath)) {
        return Status::Refused(what + " belongs to the load with checkpoint file " + state.checkpointFile +
                               ", not " + platform::AbsolutePath(checkpointPath) +
                               (state.position ? "; to examine a copy of that file give --position " +
                                                     FormatPosition(*state.position)
                                               : ""));
    }
    if (state.phase != LoadPhase::kLoading) {
        return Status::Refused("the load of " + what + " is over: every record is in " + state.target +
                               ", and no checkpoint file belongs to it any more");
    }
    return {};
}

Status CheckFirstRecord(const std::string& checkpointPath, const RestartState& state,
                        std::uint64_t maxRecordBytes) {
    const std::vector<std::string> temporaries = FindTemporaryFiles(checkpointPath);
    const CheckpointScan scan = ScanForStart(checkpointPath, temporaries, maxRecordBytes);
    const StartDecision decision = DecideStart(checkpointPath, state.position, scan, temporaries);
    if (decision.action != StartAction::kReplay || !decision.firstRecordIsRepeat) return {};
    // The module, too, uses the offset only if the file belongs to the previous checkpoint.
    const bool fromBeginning = scan.sequence == decision.position.CkPtSeq;
    const auto offset = static_cast<std::uint64_t>(decision.position.CkPtOffset);
    const auto first =
        // An empty record that a rewrite put first is skipped (H15).
        std::find_if(scan.records.begin(), scan.records.end(), [&](const ScannedRecord& record) {
            return record.length != 0 && (fromBeginning || record.offset >= offset);
        });
    std::vector<char> body;
    if (first == scan.records.end() || !ReadBody(scan.path, *first, body)) return {};
    if (body.size() == state.lastRecordLength &&
        DigestOf(body.data(), body.size()) == state.lastRecordDigest) {
        return {};
    }
    return Status::Refused("the record at offset " + std::to_string(first->offset) + " of " + scan.path +
                           " is not the last one loaded: the checkpoint file or the restart file is another "
                           "load's or a backup; restore the right file");
}

}  // namespace mqam
