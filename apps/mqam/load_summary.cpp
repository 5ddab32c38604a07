#include "apps/mqam/load_summary.h"

namespace {

std::string DescribeEnd(const LifeOutcome& outcome) {
    switch (outcome.end) {
        case LifeEnd::kEndOfInput:
            if (!outcome.endedEarly) return "end of the queue";
            return "the input ended before the read wait interval had passed (an empty message, a repeated "
                   "message "
                   "with --tdm yes, or MQ's limit of uncommitted messages): the queue may hold more, load "
                   "again";
        case LifeEnd::kOnRequest: return "on request; the queue may hold more";
        case LifeEnd::kTimeout: return "the time-out expired; the queue may hold more";
        case LifeEnd::kNotStarted: return "not started";
        case LifeEnd::kModuleFailed: return "the module failed";
        case LifeEnd::kTargetFailed: return "the target failed";
    }
    return "";
}

}  // namespace

std::string DescribeSummary(const LifeOutcome& outcome, const std::string& target, double seconds) {
    const double rate = seconds > 0 ? static_cast<double>(outcome.records) / seconds : 0;
    return DescribeEnd(outcome) + "\n  records   " + FormatCount(outcome.records) + "\n  bytes     " +
           FormatCount(outcome.bytes) + "\n  elapsed   " + FormatElapsed(seconds) + "\n  rate      " +
           FormatCount(static_cast<std::uint64_t>(rate)) + " records/s\n  target    " + target + "\n";
}

std::string DescribeWhatIsSafe(bool withCheckpoints) {
    return withCheckpoints ? "  safe      what the module had not committed is back on the queue; the "
                             "checkpoint file holds the "
                             "records since the last checkpoint\n"
                           : "  safe      without checkpoints (--ckfile, --checkpoint-every) messages taken "
                             "from the queue are "
                             "nowhere but in the target and in the log (--log)\n";
}
