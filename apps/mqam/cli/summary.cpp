// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/summary.h"

namespace mqam {

namespace {

std::string DescribeEnd(const PlainLoadResult& outcome) {
    switch (outcome.end) {
        case PlainLoadEnd::kEndOfInput: return "end of the queue";
        case PlainLoadEnd::kEndedEarly:
            return "the input ended before the read wait interval had passed; the queue may hold more\n"
                   "  why       an empty message, a repeated message (--tdm yes), MQ's limit of uncommitted "
                   "messages, "
                   "or an MQGET\n"
                   "            that failed, such as on a lost connection: the module tells them apart only "
                   "in its "
                   "trace";
        case PlainLoadEnd::kInterrupted: return "on request; the queue may hold more";
        case PlainLoadEnd::kTimeout: return "the time-out expired; the queue may hold more";
        case PlainLoadEnd::kNotStarted: return "not started";
        case PlainLoadEnd::kModuleFailed: return "the module failed";
        case PlainLoadEnd::kTargetFailed: return "the target failed";
    }
    return "";
}

}  // namespace

std::string DescribeSummary(const PlainLoadResult& outcome, const std::string& target, double seconds) {
    const double rate = outcome.secondsToLastRecord > 0
                            ? static_cast<double>(outcome.records) / outcome.secondsToLastRecord
                            : 0;
    return DescribeEnd(outcome) + "\n  records   " + FormatCount(outcome.records) + "\n  bytes     " +
           FormatCount(outcome.bytes) + "\n  elapsed   " + FormatElapsed(seconds) + "\n  rate      " +
           FormatCount(static_cast<std::uint64_t>(rate)) + " records/s up to the last record\n  target    " +
           target + "\n";
}

std::string DescribeWhatIsSafe(bool withCheckpoints) {
    if (withCheckpoints) {
        return "  safe      what the module had not committed is back on the queue; the checkpoint file "
               "holds the "
               "records since the last checkpoint\n";
    }
    return "  safe      without checkpoints (--ckfile, --checkpoint-every) messages taken from the queue are "
           "nowhere "
           "but in the target and in the log (--log)\n";
}

}  // namespace mqam
