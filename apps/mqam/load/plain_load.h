// SPDX-License-Identifier: Apache-2.0

// Runs an unprotected load, which keeps no restart information: Init, Open, Reads to the end of the input, Close, Shut. The
// module's state belongs to the process, so a process runs at most one load.
//
// What the order of calls protects:
// - The target is synced to disk before Close, because Close deletes the log.
// - After an Open or Read that failed, or a failure of the target, neither Close nor Shut is called: they
//   disconnect, which commits messages that were never delivered, and they delete the files that contain the rest. The
//   process has to end immediately instead; MQ then backs out.
//
// A message that MQGET has returned is in no other place, so nothing may end the process during a Read. The load
// therefore waits by Reads that return within two seconds (read_wait.h), and looks between them whether it is to
// stop. A Read after an end of the input gets from the queue again.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "mqam/base/progress.h"
#include "mqam/base/status.h"
#include "mqam/load/exit_table.h"
#include "mqam/load/load_observer.h"
#include "mqam/module/module_failure.h"
#include "mqam/target/record_sink.h"
#include "mqamod.h"

namespace mqam {

struct PlainLoadSettings {
    std::string initString;
    std::vector<std::pair<std::string, std::string>> attributes;  ///< put after Init, in this order
    std::chrono::seconds timeout{0};                              ///< --timeout; 0 = none
    bool wantsKeywordHelp = false;  ///< have the module print its help on standard output first
};

struct PlainLoadResult {
    PlainLoadEnd end = PlainLoadEnd::kEndOfInput;
    std::uint64_t taken = 0;    ///< records that the module returned: they are no longer on the queue
    std::uint64_t records = 0;  ///< put into the target
    std::uint64_t bytes = 0;
    double secondsToLastRecord = 0;  ///< from the first Read to the last record, without the wait at the end
    bool targetWasOpened = false;
    /// Neither Close nor Shut was called, and the process must end immediately.
    bool mustEndProcess = false;
    /// The request that failed, if its code is not pmrcOK. Close or Shut may fail after any end.
    ModuleFailure moduleFailure;
    Status error;  ///< with kNotStarted and kTargetFailed
};

/// Runs the load.
///   entryPoint  in      the loaded module
///   sink        in/out  opened after the module's Open; finished whatever ended the load, unless it failed itself
///   counters    out     counted while the load runs
[[nodiscard]] PlainLoadResult RunPlainLoad(PIDMMainFunction entryPoint, const PlainLoadSettings& settings,
                                           RecordSink& sink, const LoadObserver& observer,
                                           ProgressCounters& counters);

}  // namespace mqam
