// SPDX-License-Identifier: Apache-2.0

// The base of the recovery tests: a module whose file calls are recorded and can fail, the expected bytes of
// a checkpoint file, and the expected lines of a request in the trace.
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

/// These return trace lines without their time stamp.
std::string Info(const std::string& function, const std::string& text);
std::string Warning(const std::string& function, const std::string& text);
std::string Error(const std::string& function, const std::string& text);
Lines Chain(std::initializer_list<Lines> parts);
/// Returns the lines that a request adds to the trace at level 2 and above: its entry, the given lines, and
/// its return.
Lines Traced(const std::string& option, ReturnCode returnCode, std::initializer_list<Lines> between = {});

/// These return "MQA0146: <!ERROR! expected EXPECTED bytes, wrote WROTE>" and the same for reads.
std::string ShortWrite(std::int64_t expected, std::int64_t wrote);
std::string ShortRead(std::int64_t expected, std::int64_t read);

/// These return the bytes of one record, of several records, and of a whole checkpoint file.
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

    /// Loads the module as a new process does. The previous process has died without calling MQ or touching
    /// its files.
    void StartNewProcess();

    /// Sends Init and Open with `keywords` and a trace of `traceLevel`, and skips the trace lines, file calls
    /// and MQ calls of both.
    void Begin(const std::string& keywords, int traceLevel = 4);
    /// Calls Begin with the checkpoint file ck.dat.
    void BeginCheckpointing(const std::string& keywords = "", int traceLevel = 4);
    /// Writes ck.dat with `sequence` and `records`, opens it, and sends SetPos with that sequence, so that
    /// the next Read returns the first record.
    void BeginReplay(std::int32_t sequence, const std::vector<std::string>& records,
                     const std::string& keywords = "");

    /// Puts messages on the queue and reads them as records.
    void Deliver(const std::vector<std::string>& records);
    /// Sends GetPos, expects it to return a position and returns that position.
    PositionData TakePosition();
    /// Sends GetPos twice without a Read in between, so that the second one carries the checkpoint out.
    /// Returns the position from the first.
    PositionData TakeCheckpoint();
    /// Skips the trace lines, file calls and MQ calls made so far.
    void PassOver();

    void PreserveRestartInfo(const std::string& yesOrNo);
    /// Makes the deletion of the file at Close fail.
    void FailDeletion(const std::string& path, int error);
    /// Returns how many calls to delete the file, as Close makes them, were recorded.
    [[nodiscard]] std::size_t Deletions(const std::string& path) const;
    /// Returns the recorded calls on the file.
    [[nodiscard]] Lines CallsOn(const std::string& path) const;

    static std::string TempFile();

    std::unique_ptr<FaultPlan> faults;
};
