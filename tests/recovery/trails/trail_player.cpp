// SPDX-License-Identifier: Apache-2.0
#include "tests/recovery/trails/trail_player.h"

#include <algorithm>

namespace {

constexpr int kMessages = 3;

}  // namespace

/// Lists the lines that trails can contain.
struct TrailRows {
    static constexpr Trail::Row kHost[] = {
        {"Init, PRESERVE_RESTART_INFO YES, Open -> 0", &Trail::InitOpen},
        {"Init, Open -> 0", &Trail::InitOpenUnpreserved},
        {"Init, PRESERVE_RESTART_INFO YES, Open -> 34: the queue manager cannot be reached",
         &Trail::InitOpenUnreachable},
        {"Open -> 0", &Trail::OpenAgain},
        {"GetPos -> #", &Trail::GetPosition},
        {"GetPos again", &Trail::GetPositionAgain},
        {"stored: position #, # records", &Trail::Store},
        {"not stored: sequence # is stored already", &Trail::LeaveStored},
        {"SetPos #", &Trail::SetPosition},
        {"Read", &Trail::ReadRecord},
        {"(#: the repeat)", &Trail::CheckRepeat},
        {"Close -> 0", &Trail::CloseLoad},
        {"the process ends without Close", &Trail::EndWithoutClose},
        {"fault: the operator stops the load", &Trail::StopLoad},
        {"fault: another load takes message #", &Trail::LoseToOther},
        {"done: # records", &Trail::CallDone},
    };
    static constexpr Trail::Row kDetails[] = {
        {"dies after MQGET", &Trail::DieAfterGet},
        {"dies while the record is saved", &Trail::DieInSave},
        {"dies after MQCMIT", &Trail::DieAfterCommit},
        {"dies after the rewrite", &Trail::DieAfterRewrite},
        {"dies while the temporary file is written", &Trail::DieInTemporary},
        {"dies between delete and rename", &Trail::DieBeforeRename},
        {"dies after the rename", &Trail::DieAfterRename},
        {"dies with the target durable and the position not stored", &Trail::DieInHost},
        {"dies with the position stored", &Trail::DieInHost},
        {"dies before done is stored", &Trail::DieInHost},
        {"left: a checkpoint file of # bytes", &Trail::LeaveBytes, &Trail::CheckBytes},
        {"left: the record cut short", &Trail::LeaveRecordShort},
        {"left: all but the last record", &Trail::LoseLastRecord},
        {"the queue manager does not notice yet: message # stays in the unit of work", &Trail::StayUnnoticed},
        {"the queue manager backs message # out", &Trail::BackOutLate},
        {"message # is committed by its sender", &Trail::CommitOfSender},
        {"fault: MQGET fails without data, the connection works", &Trail::MeetFailure},
        {"fault: MQGET fails without data, the connection is broken", &Trail::MeetBrokenConnection},
        {"only after RWAIT has passed", &Trail::BeSlow},
        {"fault: MQGET returns message # with a warning", &Trail::MeetWarning, &Trail::CheckDelivered},
        {"fault: the time-out fires", &Trail::MeetTimeout},
        {"fault: the rewrite for checkpoint # fails", &Trail::FailRewrite},
        {"fault: writing the temporary file fails", &Trail::FailTemporary},
        {"fault: reading the checkpoint file fails in the middle of a record", &Trail::FailReplay},
        {"fault: the checkpoint file cannot be read", &Trail::FailSetPos},
        {"fault: the offset of the record to be saved cannot be determined", &Trail::FailPlace},
        {"fault: so does MQBACK", &Trail::FailBackOut},
        {"fault: writing the message log fails", &Trail::FailLog},
        {"checkpoint #: file truncated, header and last record written", nullptr, &Trail::CheckRewrite},
        {"checkpoint #: file replaced, # records after the last one kept", nullptr, &Trail::CheckReplacement},
        {"MQGET returns message #", nullptr, &Trail::CheckDelivered},
        {"message # is taken for a duplicate", nullptr, &Trail::CheckDelivered},
        {"message # is empty", nullptr, &Trail::CheckDelivered},
        {"-> record #", nullptr, &Trail::CheckRecord},
        {"-> end of input, after RWAIT", &Trail::BeSlowByClock, &Trail::CheckSlowEnd},
        {"-> end of input, before RWAIT", nullptr, &Trail::CheckQuickEnd},
        {"-> time-out", nullptr, &Trail::CheckTimeout},
        {"-> 34", nullptr, &Trail::CheckFailure},
        {"-> 0 (header #, replay from record # of #)", nullptr, &Trail::CheckReplayBegins},
    };
};

std::string Trail::Play(const std::string& name) {
    SCOPED_TRACE("model/trails/" + name + ".txt");
    trail_ = ReadTrail(name);
    EXPECT_FALSE(trail_.lines.empty());
    PutMessages();
    PlayLines(trail_.lines);
    return error_;
}

void Trail::GoOn(const std::string& lines) {
    PlayLines(TrailLines(lines));
}

bool Trail::Keeps(const std::string& rule) const {
    return Defined("RULE_" + rule, 1) != 0;
}

int Trail::Defined(const std::string& name, int otherwise) const {
    const auto found = trail_.definitions.find(name);
    return found == trail_.definitions.end() ? otherwise : found->second;
}

/// Makes messages of different lengths. None begins with the bytes of another, unless a switch says so.
void Trail::PutMessages() {
    for (int number = 1; number <= Defined("N", kMessages); ++number) {
        QueuedMessage message;
        const bool isEmpty = ((Defined("EMPTIES", 0) >> number) & 1) != 0;
        if (!isEmpty)
            message.bytes =
                "message " + std::string(static_cast<std::size_t>(number), static_cast<char>('a' + number));
        if (number == 1 && !bytesOfMessage1.empty()) message.bytes = bytesOfMessage1;
        if (Defined("NULS", 0) != 0 && number == 1) message.bytes = std::string(9, '\0');
        if (Defined("ALIKE", 0) != 0 && number == 2) message.bytes = queue.messages[1].bytes.substr(0, 7);
        if (Defined("OVERTAKE", 0) != 0 && number == 1) message.stands = Stands::Unsent;
        queue.messages.emplace(number, message);
    }
    logged_ = std::any_of(trail_.lines.begin(), trail_.lines.end(), [](const TrailLine& line) {
        return line.text.find("message log") != std::string::npos;
    });
}

void Trail::PlayLines(const std::vector<TrailLine>& lines) {
    for (auto line = lines.begin(); line != lines.end() && !HasFatalFailure();) {
        const auto next =
            std::find_if(line + 1, lines.end(), [](const TrailLine& other) { return other.indent <= 2; });
        SCOPED_TRACE("attempt " + std::to_string(life) + ", line: " + line->text);
        PlayBlock({line, next});
        line = next;
    }
}

void Trail::PlayBlock(const std::vector<TrailLine>& block) {
    const std::string& text = block.front().text;
    if (text.rfind("attempt ", 0) == 0) return PlayLife(text);
    if (text.rfind("ERROR: ", 0) == 0) {
        if (error_.empty()) error_ = text.substr(7);
        return;
    }
    struct Found {
        Step step;
        Numbers numbers;
    };
    std::vector<Found> before;
    std::vector<Found> after;
    Numbers numbers;
    for (const TrailLine& line : std::vector<TrailLine>(block.begin() + 1, block.end())) {
        const auto* const row =
            std::find_if(std::begin(TrailRows::kDetails), std::end(TrailRows::kDetails),
                         [&](const Row& other) { return MatchesPattern(line.text, other.pattern, numbers); });
        ASSERT_NE(row, std::end(TrailRows::kDetails))
            << "a line that the player does not know: " << line.text;
        if (row->before != nullptr) before.push_back({row->before, numbers});
        if (row->after != nullptr) after.push_back({row->after, numbers});
    }
    const auto* const row =
        std::find_if(std::begin(TrailRows::kHost), std::end(TrailRows::kHost),
                     [&](const Row& other) { return MatchesPattern(text, other.pattern, numbers); });
    ASSERT_NE(row, std::end(TrailRows::kHost)) << "a line that the player does not know: " << text;

    request_ = text;
    leaves = Leaves::All;
    meets_ = GetMeets::Queue;
    slowly_ = dies_ = losesLastRecord_ = false;
    if (faults) faults->log.clear();
    const Numbers own = numbers;
    for (const Found& found : before)
        (this->*found.step)(found.numbers);
    (this->*row->before)(own);
    // If the process died in the request, its remaining lines are not compared: they describe what happened
    // before the death, and the files show that.
    if (DiedInRequest()) {
        if (losesLastRecord_) {
            RestartFiles files = LookAtRestartFiles();
            const CheckpointPicture picture = PictureOf(files[kCheckpointFile]);
            ASSERT_FALSE(picture.offsets.empty());
            files[kCheckpointFile].resize(picture.offsets.back());
            PutRestartFiles(files);
        }
    } else if (dies_) {
        EndProcess();
    }
    for (const Found& found : after)
        (this->*found.step)(found.numbers);
}

void Trail::PlayLife(const std::string& line) {
    if (running) EndProcess();
    StartProcess();
    ASSERT_FALSE(HasFatalFailure());
    EXPECT_EQ(LifeLine(), line);
    const std::size_t kept = Keeps("T1") && stored ? stored->records : Keeps("T1") ? 0 : durable;
    target.resize(std::min({kept, durable, target.size()}));
}

std::string Trail::LifeLine() const {
    std::string line = "attempt " + std::to_string(life) + ": " +
                       std::to_string(stored ? stored->records : 0) + " records stored";
    if (stored) line += " with position " + std::to_string(stored->data.CkPtSeq);
    return line + "; " + CheckpointText();
}

std::string Trail::CheckpointText() const {
    const RestartFiles files = LookAtRestartFiles();
    const auto file = files.find(kCheckpointFile);
    if (file == files.end()) return "no checkpoint file";
    const std::string& bytes = file->second;
    for (const auto& [number, message] : queue.messages) {
        const auto length = static_cast<std::uint64_t>(message.bytes.size());
        const std::string image(reinterpret_cast<const char*>(&length), sizeof length);
        if (bytes.rfind(image + message.bytes, 0) == 0) return "checkpoint file without a header";
    }
    const CheckpointPicture picture = PictureOf(bytes);
    if (!picture.hasHeader) return "checkpoint file of " + std::to_string(bytes.size()) + " bytes";
    return "checkpoint file: header " + std::to_string(picture.sequence) + ", " +
           std::to_string(picture.offsets.size()) + " records";
}

std::string Trail::Keywords() const {
    std::string keywords = Keeps("H6_TDM") ? "-TDM YES" : "-TDM NO";
    if (Keeps("H21")) keywords += " -MQEX";
    if (logged_) keywords += std::string(" -LOG ") + kMessageLog;
    return keywords;
}
