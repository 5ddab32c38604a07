// One life of the module: Init, Open, Reads to the end of the input, Close, Shut. The module's state belongs
// to the process, so a process lives at most one of them.
//
// What the order of calls protects:
// - The target is on the medium before Close, because Close deletes the checkpoint file and the log.
// - A checkpoint is asked for right after Open, before the first Read: what was read before the first
// checkpoint is
//   kept nowhere. Later ones are asked for only when records came since the last one, and the target is on
//   the medium before the Read that carries the checkpoint out.
// - After a failed Open, Read or GetPos, or a target that failed, neither Close nor Shut is called: they
//   disconnect, which commits messages that were never delivered, and they delete the files that hold the
//   rest. The process has to end at once instead; then MQ backs out.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "mqam/base/progress.h"
#include "mqam/load/load_observer.h"
#include "mqam/module/module_failure.h"
#include "mqam/target/record_sink.h"
#include "mqamod.h"

namespace mqam {

struct PlainLoadSettings {
    std::string initString;
    std::vector<std::pair<std::string, std::string>> attributes;  ///< put after Init, in order
    std::uint64_t checkpointEveryRecords = 0;                     ///< 0 = no checkpoints
    bool keywordHelpWanted =
        false;  ///< have the module print its help on standard output before anything else
};

enum class PlainLoadEnd {
    kEndOfInput,
    kEndedEarly,    ///< the module told the end of the input before the read wait interval had passed
    kInterrupted,   ///< stopWanted said so
    kTimeout,       ///< the module's time-out expired
    kNotStarted,    ///< see refusal; nothing was opened
    kModuleFailed,  ///< see moduleFailure
    kTargetFailed,  ///< see targetFailure
};

struct PlainLoadResult {
    PlainLoadEnd end = PlainLoadEnd::kEndOfInput;
    std::uint64_t records = 0;  ///< put into the target
    std::uint64_t bytes = 0;
    double secondsToLastRecord =
        0;  ///< from the first Read to the last record: the wait at the end is not in it
    bool targetWasOpened = false;
    /// Neither Close nor Shut was called and the process must end without further ado.
    bool mustEndProcess = false;
    ModuleFailure moduleFailure;  ///< code not pmrcOK = a request failed; Close or Shut may, whatever the end
    std::string targetFailure;
    std::string refusal;  ///< with kNotStarted: the error message
};

/// Lives one life.
///   entryPoint  in      the loaded module
///   sink        in/out  opened after the module's Open; finished whatever ended the life, unless it failed
///   itself counters    out     counted while the life runs
[[nodiscard]] PlainLoadResult RunPlainLoad(PIDMMainFunction entryPoint, const PlainLoadSettings& settings,
                                           RecordSink& sink, const LoadObserver& observer,
                                           ProgressCounters& counters);

}  // namespace mqam
