// SPDX-License-Identifier: Apache-2.0

// The options of `mqam load`, and what both kinds of load make of them: the protected load, which is resumed where it
// stopped, and the unprotected one.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "mqam/base/progress.h"
#include "mqam/cli/keyword_options.h"
#include "mqam/explain/failure_report.h"
#include "mqam/load/load_observer.h"
#include "mqam/load/supervisor.h"
#include "mqam/load/worker.h"
#include "mqam/target/file/file_sink.h"

namespace CLI {
class App;
}

namespace mqam {

/// The checkpoint interval in records of a load with restart information that is given none.
inline constexpr std::uint64_t kCheckpointEveryByDefault = 1000;

struct LoadOptions {
    ModuleOptions module;
    std::string target;
    RecordFormat format = RecordFormat::kLines;
    bool formatGiven = false;
    NewlineRule newlines = NewlineRule::kKeep;
    bool newlinesGiven = false;
    bool force = false;
    bool append = false;
    bool unprotected = false;  ///< --unprotected, or implied by the target
    std::vector<std::string> attributes;
    int timeoutSeconds = 0;
    bool preserve = false;
    std::uint64_t checkpointEvery = 0;
    std::uint64_t checkpointSeconds = 0;
    std::string restartFile;
    RestartPolicy restart = RestartPolicy::kAuto;
    std::uint64_t retryForSeconds = 0;
    bool acceptLoss = false;
    bool yes = false;
    Durability durability = Durability::kPower;
    bool durabilityGiven = false;

    // The hidden options of a worker process; see worker.h.
    std::int64_t workerSince = -1;  ///< when the command started, if this process is a worker; else negative
    bool workerCompletedBefore =
        false;  ///< a load found complete was already complete before the command started
    bool workerAcceptsLoss = false;  ///< this attempt may ask the user to accept a loss
    bool workerFollowsEnd = false;   ///< the previous worker has just waited for the whole read wait interval

    int probe = 0;  ///< a ProbeKind, if this process is a probe; see probe_process.h

    /// The line that follows an error about an option; set when the command runs.
    std::string usage;

    bool verbose = false;
    bool quiet = false;
};

/// Adds every option to the command. `options` must outlive the parsing.
void AddLoadOptions(CLI::App& command, LoadOptions& options);

/// Returns whether the load keeps restart information, so that it can be resumed.
[[nodiscard]] bool IsProtected(const LoadOptions& options);

/// Refuses --on-newline where it has no meaning.
Status CheckNewlineRule(const LoadOptions& options);

/// Makes name and value of each --attribute, and of the options that stand for an attribute. Refuses an
/// --attribute that is not of the form NAME=VALUE.
Status ComposeAttributes(const LoadOptions& options,
                         std::vector<std::pair<std::string, std::string>>& attributes);

/// Makes the observer that prints what the load reports, in as much detail as the user asked for.
[[nodiscard]] LoadObserver MakeObserver(const LoadOptions& options);

/// How much of a failure the user asked to see.
[[nodiscard]] FailureDetail DetailOf(const LoadOptions& options);

/// Chooses how progress is shown.
///   recordsOnScreen  whether the records themselves go to the user's terminal
[[nodiscard]] ProgressStyle ChooseProgressStyle(const LoadOptions& options, bool recordsOnScreen);

}  // namespace mqam
