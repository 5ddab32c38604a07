// SPDX-License-Identifier: Apache-2.0

// Does what comes before the Open of an attempt of a restartable load: it acquires the locks, finds out which
// load this is and how far it has come, and brings the files into a state from which the module can resume.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "mqam/checkpoint/start_decision.h"
#include "mqam/load/attempt_journal.h"
#include "mqam/load/attempt_result.h"
#include "mqam/load/load_observer.h"
#include "mqam/module/module_session.h"
#include "mqam/target/target.h"

namespace mqam {

struct AttemptSettings {
    std::string initString;
    std::vector<std::pair<std::string, std::string>> attributes;  ///< put after Init, in this order
    std::uint64_t checkpointEveryRecords = 0;                     ///< 0 = not by count
    std::uint64_t checkpointEverySeconds = 0;                     ///< 0 = not by time
    std::chrono::seconds timeout{0};                              ///< --timeout; 0 = none
    Durability durability = Durability::kPower;
    std::string journalLibrary;        ///< with kPower
    std::string directory;             ///< stored with the load: where its command was run
    std::vector<std::string> command;  ///< stored with the load: the command, without the program's name
    bool completedBefore =
        false;                    ///< the load found complete was already complete before the command started
    bool followsEnd = false;      ///< the previous attempt has just ended after the whole read wait interval
    bool unfinishedOnly = false;  ///< do not begin a new load in place of a completed one
};

/// What one attempt works with, and what is known after its preparation.
struct AttemptContext {
    ModuleSession session;
    const AttemptSettings& settings;
    Target& target;
    const LoadObserver& observer;
    AttemptResult result = {};
    StartupReport report = {};        ///< the module's parameters in effect
    bool isNew = false;               ///< whether the load begins, so that its target has yet to be begun
    StartDecision decision = {};      ///< how to start; its repairs have been made
    StoredJournal journal = {};       ///< what the journal said; it has yet to be prepared (PrepareJournal)
    std::string checkpointLock = {};  ///< the lock of the checkpoint file, held; empty if it was not acquired
};

/// Prepares the attempt. On success the module is ready for Open, the target is rolled back to the state in the result
/// and ready for Puts, or still as it was if the load is new. Returns false if the attempt is over: it was refused, it failed, or there is nothing to do; the
/// result says which. In both cases the target's lock of attempts may be held.
[[nodiscard]] bool PrepareAttempt(AttemptContext& attempt);

}  // namespace mqam
