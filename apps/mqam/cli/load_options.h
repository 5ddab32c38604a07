// What `mqam load` can be told, and what both kinds of load make of it: the one that is restarted from its
// beginning and the one that goes on where it stopped.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "mqam/base/progress.h"
#include "mqam/cli/keyword_options.h"
#include "mqam/load/load_observer.h"
#include "mqam/load/supervisor.h"
#include "mqam/load/worker.h"
#include "mqam/target/file/file_sink.h"

namespace CLI {
class App;
}

namespace mqam {

struct LoadOptions {
    ModuleOptions module;
    std::string target;
    RecordFormat format = RecordFormat::kLines;
    bool formatGiven = false;
    bool force = false;
    bool append = false;
    std::vector<std::string> attributes;
    int timeoutSeconds = 0;
    bool preserve = false;
    std::uint64_t checkpointEvery = 0;
    std::uint64_t checkpointSeconds = 0;
    std::string restartFile;
    RestartPolicy restart = RestartPolicy::kAuto;
    std::uint64_t retryForSeconds = 0;
    std::int64_t workerSince =
        -1;  ///< hidden; not negative: this process is a worker of the command begun then
    bool workerMeetsReceipt = false;  ///< hidden; a load that is over was so before the command
    bool workerFollowsEnd =
        false;  ///< hidden; the worker before has just waited for messages the whole interval
    bool verbose = false;
    bool quiet = false;
};

/// Adds every option to the command. `options` must outlive the parsing.
void AddLoadOptions(CLI::App& command, LoadOptions& options);

/// Whether the load keeps restart information, and so goes on where it stopped.
[[nodiscard]] bool IsRestartable(const LoadOptions& options);

/// Makes name and value of each --attribute, and of the options that stand for one. Returns false with a
/// complaint for one that has another form.
[[nodiscard]] bool ComposeAttributes(const LoadOptions& options,
                                     std::vector<std::pair<std::string, std::string>>& attributes,
                                     std::string& complaint);

/// What is told while a life runs, as wordy as the user wants it.
[[nodiscard]] LoadObserver MakeObserver(const LoadOptions& options);

/// How progress is to be shown. `recordsOnScreen`: the records themselves go to the user's terminal.
[[nodiscard]] ProgressStyle ChooseProgressStyle(const LoadOptions& options, bool recordsOnScreen);

}  // namespace mqam
