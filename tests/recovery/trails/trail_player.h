// SPDX-License-Identifier: Apache-2.0

// Plays a trail of the model against the module. The player carries each line out, or compares it with what
// the module did. A line that the player does not know makes the test fail.
#pragma once

#include <string>
#include <vector>

#include "tests/recovery/trails/restarted_load.h"
#include "tests/recovery/trails/trail_file.h"

class Trail : public RestartedLoad {
  public:
    using Numbers = std::vector<int>;
    using Step = void (Trail::*)(const Numbers&);
    /// Describes a line of a trail. A detail, which is a line below a step of the host, can have a part that
    /// is done before the request and one that is compared afterwards.
    struct Row {
        const char* pattern;
        Step before;
        Step after = nullptr;
    };

  protected:
    /// Plays model/trails/NAME.txt. Returns the damage with which it ends, without "ERROR: ".
    std::string Play(const std::string& name);
    /// Continues after Play with lines in the form of a trail.
    void GoOn(const std::string& lines);

    /// Returns whether the host of the trail keeps the rule.
    [[nodiscard]] bool Keeps(const std::string& rule) const;
    [[nodiscard]] int Defined(const std::string& name, int otherwise) const;

    /// Puts the messages of the trail on the queue, or three if there is no trail.
    void PutMessages();

    std::string bytesOfMessage1;  ///< the bytes of message 1 if the trail does not define them
    bool done = false;            ///< the host has declared the load done

  private:
    friend struct TrailRows;

    void PlayLines(const std::vector<TrailLine>& lines);
    void PlayBlock(const std::vector<TrailLine>& block);
    void PlayLife(const std::string& line);
    [[nodiscard]] std::string LifeLine() const;
    [[nodiscard]] std::string CheckpointText() const;
    [[nodiscard]] std::string Keywords() const;
    void FailSave();
    void FailFile(FileCall call, int nth, const std::string& file = kCheckpointFile);

    // ---- what the host does
    void InitOpen(const Numbers&);
    void InitOpenUnpreserved(const Numbers&);
    void InitOpenUnreachable(const Numbers&);
    void OpenAgain(const Numbers&);
    void GetPosition(const Numbers&);
    void GetPositionAgain(const Numbers&);
    void Store(const Numbers&);
    void LeaveStored(const Numbers&);
    void SetPosition(const Numbers&);
    void ReadRecord(const Numbers&);
    void CheckRepeat(const Numbers&);
    void CloseLoad(const Numbers&);
    void EndWithoutClose(const Numbers&);
    void StopLoad(const Numbers&);
    void LoseToOther(const Numbers&);
    void CallDone(const Numbers&);

    // ---- what happens inside a request
    void DieAfterGet(const Numbers&);
    void DieInSave(const Numbers&);
    void DieAfterCommit(const Numbers&);
    void DieAfterRewrite(const Numbers&);
    void DieInTemporary(const Numbers&);
    void DieBeforeRename(const Numbers&);
    void DieAfterRename(const Numbers&);
    void DieInHost(const Numbers&);
    void LeaveBytes(const Numbers&);
    void CheckBytes(const Numbers&);
    void LeaveRecordShort(const Numbers&);
    void LoseLastRecord(const Numbers&);
    void StayUnnoticed(const Numbers&);
    void MeetFailure(const Numbers&);
    void MeetBrokenConnection(const Numbers&);
    void MeetWarning(const Numbers&);
    void MeetTimeout(const Numbers&);
    void FailRewrite(const Numbers&);
    void FailTemporary(const Numbers&);
    void FailReplay(const Numbers&);
    void FailSetPos(const Numbers&);
    void FailPlace(const Numbers&);
    void FailBackOut(const Numbers&);
    void FailLog(const Numbers&);
    void CommitOfSender(const Numbers&);
    void BackOutLate(const Numbers&);
    void BeSlow(const Numbers&);
    void BeSlowByClock(const Numbers&);
    void CheckRewrite(const Numbers&);
    void CheckReplacement(const Numbers&);
    void CheckDelivered(const Numbers&);
    void CheckRecord(const Numbers&);
    void CheckSlowEnd(const Numbers&);
    void CheckQuickEnd(const Numbers&);
    void CheckTimeout(const Numbers&);
    void CheckFailure(const Numbers&);
    void CheckReplayBegins(const Numbers&);

    TrailFile trail_;
    std::string error_;
    bool logged_ = false;  ///< a message log is kept

    // These variables describe the host's step that is being played.
    std::string request_;
    GetMeets meets_ = GetMeets::Queue;
    bool slowly_ = false;
    bool dies_ = false;
    bool losesLastRecord_ = false;
};
