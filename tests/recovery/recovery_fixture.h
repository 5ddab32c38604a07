// The ground of the recovery tests: a module whose file calls are recorded and can fail, the bytes that a
// checkpoint file must hold, and the lines that a request must leave in the trace.
#pragma once

#include <gmock/gmock.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/fault_plan.h"
#include "tests/support/module_fixture.h"

using Lines = std::vector<std::string>;

inline constexpr char kCkFile[] = "ck.dat";
inline constexpr char kLogFile[] = "log.dat";

/// Trace lines without their stamp.
std::string Info(const std::string& function, const std::string& text);
std::string Warning(const std::string& function, const std::string& text);
std::string Error(const std::string& function, const std::string& text);
Lines Chain(std::initializer_list<Lines> parts);
/// What a request leaves in the trace at level 2 and above: its entry, the lines between, its return.
Lines Traced(const std::string& option, ReturnCode returnCode, std::initializer_list<Lines> between = {});

/// "MQA0146: <!ERROR! expected EXPECTED bytes, wrote WROTE>" and its like for reads.
std::string ShortWrite(std::int64_t expected, std::int64_t wrote);
std::string ShortRead(std::int64_t expected, std::int64_t read);

/// The bytes of a checkpoint file, or of one record in it.
std::string CkRecord(const std::string& bytes);
std::string CkRecords(const std::vector<std::string>& records);
std::string CkBytes(std::int32_t sequence, const std::vector<std::string>& records = {});

testing::AssertionResult Gives(const ReadOutcome& outcome, const std::string& record);
testing::AssertionResult Is(const PositionData& position, std::int32_t sequence, std::int32_t count,
                            std::int64_t offset);

class RecoveryFixture : public ModuleFixture {
  protected:
    void SetUp() override;
    void TearDown() override;

    /// The module of a process that starts now, the one before gone without a word to MQ or its files.
    void StartNewProcess();

    /// Init and Open with these keywords and a trace of that level. Trace lines, file calls and MQ calls up
    /// to here are passed over.
    void Begin(const std::string& keywords, int traceLevel = 4);
    /// Begin with the checkpoint file ck.dat.
    void BeginCheckpointing(const std::string& keywords = "", int traceLevel = 4);
    /// Writes ck.dat with these records and begins; the position has its sequence, so that the first of them
    /// is delivered first.
    void BeginReplay(std::int32_t sequence, const std::vector<std::string>& records,
                     const std::string& keywords = "");

    /// Puts messages on the queue and reads them.
    void Deliver(const std::vector<std::string>& records);
    /// GetPos, which must hand out a position.
    PositionData TakePosition();
    /// A position taken and carried out: by a redundant request, which reads nothing.
    PositionData TakeCheckpoint();
    /// Passes over trace lines, file calls and MQ calls up to here.
    void PassOver();

    void PreserveRestartInfo(const std::string& yesOrNo);
    /// The deletion of the file at close cannot be carried out.
    void FailDeletion(const std::string& path, int error);
    /// The calls that deleted the file at close: one, or none.
    [[nodiscard]] std::size_t Deletions(const std::string& path) const;
    /// The calls on the file that the log of file calls holds.
    [[nodiscard]] Lines CallsOn(const std::string& path) const;

    static std::string TempFile();

    std::unique_ptr<FaultPlan> faults;
};
