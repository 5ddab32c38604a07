// What a life of a load that can be restarted does before its Open: it takes the locks, finds out which load
// this is and how far it came, and brings the files into a shape that the module can go on from.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "mqam/checkpoint/start_decision.h"
#include "mqam/load/attempt_result.h"
#include "mqam/load/load_observer.h"
#include "mqam/module/module_session.h"
#include "mqam/target/target.h"

namespace mqam {

struct AttemptSettings {
    std::string initString;
    std::vector<std::pair<std::string, std::string>> attributes;  ///< put after Init, in order
    std::uint64_t checkpointEveryRecords = 0;                     ///< 0 = not by count
    std::uint64_t checkpointEverySeconds = 0;                     ///< 0 = not by time
    bool meetsReceipt = false;    ///< a load that is over was so before the command
    bool followsEnd = false;      ///< the life before ended a moment ago, after the whole wait interval
    bool unfinishedOnly = false;  ///< begin no load over one that is over
};

/// What the rest of the life goes by.
struct Preparation {
    StartupReport report;        ///< the module's parameters in effect
    StartDecision decision;      ///< how to begin; its repairs are made
    std::string checkpointLock;  ///< held; "" when it did not come to that
};

/// Prepares.
///   session      in/out  the module before its Init; then ready for Open
///   target       in/out  not locked yet; then cut back to the outcome's state and ready for Puts
///   preparation  out     filled as far as it came, also on failure
///   outcome      out     state: what the life goes on from. On failure how the life ended.
/// Returns false when the life is over: it was refused, failed, or there is nothing to do. The target's lock
/// of lives may be held either way.
[[nodiscard]] bool PrepareAttempt(ModuleSession& session, const AttemptSettings& settings, Target& target,
                                  const LoadObserver& observer, Preparation& preparation,
                                  AttemptResult& outcome);

}  // namespace mqam
