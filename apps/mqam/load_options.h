// What `mqam load` can be told, and what both kinds of load make of it: the one that is restarted from its
// beginning and the one that goes on where it stopped.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "apps/mqam/file_sink.h"
#include "apps/mqam/keyword_options.h"
#include "apps/mqam/load_life.h"
#include "apps/mqam/progress.h"

namespace CLI {
class App;
}

enum class RestartPolicy {
    kAuto,   ///< go on with an unfinished load, else begin one
    kNever,  ///< refuse when there is an unfinished load
    kOnly,   ///< refuse when there is none
};

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

/// The hidden options by which a command starts its workers. The value of the first one is the time at which
/// the command began, in milliseconds since the system's epoch.
inline constexpr char kWorkerOption[] = "--worker-since";
inline constexpr char kReceiptOption[] = "--worker-meets-receipt";
inline constexpr char kFollowsEndOption[] = "--worker-follows-end";

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
[[nodiscard]] LifeObserver MakeObserver(const LoadOptions& options);

/// How progress is to be shown. `recordsOnScreen`: the records themselves go to the user's terminal.
[[nodiscard]] ProgressStyle ChooseProgressStyle(const LoadOptions& options, bool recordsOnScreen);
