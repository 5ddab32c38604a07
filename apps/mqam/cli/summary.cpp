// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/summary.h"

#include <algorithm>
#include <iterator>

#include "mqam/module/error_text.h"

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
                   "            that failed, such as on a lost connection: the module does not say which";
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

namespace {

// MQ has taken the message off the queue when it reports that it could not convert it.
bool IsConversionFailure(const ModuleFailure& failure) {
    constexpr int kReasons[] = {2110, 2111, 2112, 2113, 2114, 2115, 2116, 2117, 2118,
                                2119, 2120, 2143, 2144, 2145, 2146, 2150, 2190};
    ErrorText error;
    return failure.code != pmrcOK && ParseErrorText(failure.text, error) && error.failingCall == "MQGET" &&
           std::ranges::find(kReasons, error.mqReason) != std::end(kReasons);
}

std::uint64_t CountTaken(const PlainLoadResult& outcome) {
    return outcome.taken + (IsConversionFailure(outcome.moduleFailure) ? 1 : 0);
}

}  // namespace

bool IsAnyLost(const PlainLoadResult& outcome) {
    return CountTaken(outcome) > outcome.records;
}

std::string DescribeCost(const PlainLoadResult& outcome, std::uint64_t mostRecordsHeld,
                         const std::string& target) {
    const std::uint64_t taken = CountTaken(outcome);
    const std::string ofTaken = " of the " + FormatCount(taken) + " messages taken from the queue ";
    if (IsAnyLost(outcome)) {
        const std::uint64_t lost = taken - outcome.records;
        return "  lost      " + FormatCount(lost) + ofTaken + (lost == 1 ? "was" : "were") +
               " not written to " + target + "\n";
    }
    return "  risk      a failure could have lost " + FormatCount(mostRecordsHeld) + ofTaken +
           "(--unprotected)\n";
}

}  // namespace mqam
