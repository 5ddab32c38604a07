// SPDX-License-Identifier: Apache-2.0

// Every MQ call of a restarted load fails once with every code that is documented for it: at its first call,
// at one in the middle and at its last. The request must return what it promises, and the load must end with
// every message in the target exactly once.
#include <optional>

#include "tests/failures/failing_load.h"
#include "tests/failures/mqi_failure_cases.h"
#include "tests/support/expected_error.h"

namespace {

// Defines the load of all cases. The operator stops its first attempt. A commit of the second attempt is lost
// with the connection, so the third attempt begins with a replay and ends with the duplicate. The fourth
// attempt loads the rest, and the fifth finds nothing more.
const LoadPlan kPlan{.keywords = "", .stopAfter = 4};
const MqiFault kLostCommit{Verb::Cmit, 6, MQCC_FAILED, 2009, Effect::BackedOut, true};
constexpr int kAttemptsWithoutFailure = 5;

const std::vector<QueueManagerDouble::Call>& CallsWithoutFailure() {
    static const std::vector<QueueManagerDouble::Call> calls = [] {
        FailingLoad load(kPlan);
        load.queueManager.Add(kLostCommit);
        load.RunToTheEnd();
        EXPECT_EQ(load.host.Attempts(), kAttemptsWithoutFailure);
        return load.queueManager.calls;
    }();
    return calls;
}

/// Returns the number of the call of the verb that must fail, counted over all attempts. For MQGET it is a
/// call that returns a message, except with EmptyQueue.
int Nth(Verb verb, When when) {
    const bool message = verb == Verb::Get && when != When::EmptyQueue;
    std::vector<int> candidates;
    for (const QueueManagerDouble::Call& call : CallsWithoutFailure()) {
        if (call.verb == verb && call.gotMessage == message) candidates.push_back(call.nth);
    }
    if (candidates.size() < 3) return 0;
    switch (when) {
        case When::First: return candidates.front();
        case When::Middle: return candidates[(candidates.size() - 1) / 2];
        case When::Last:
        case When::EmptyQueue: return candidates.back();
    }
    return 0;
}

/// Returns the number of the message that cannot be saved.
int NthMessage(When when) {
    int messages = 0;
    for (const QueueManagerDouble::Call& call : CallsWithoutFailure())
        messages += call.gotMessage ? 1 : 0;
    if (when == When::First) return 1;
    return when == When::Middle ? messages / 2 : messages;
}

FileCall CallOf(SaveFault fault) {
    if (fault == SaveFault::Tell) return FileCall::Tell;
    return fault == SaveFault::Write ? FileCall::Write : FileCall::Flush;
}

struct Expected {
    std::string request;
    ReturnCode returnCode = pmrcOK;
    std::optional<ExpectedError> error{};
};

ExpectedError WithSeverity(ExpectedError error, const MqiFault& fault) {
    return fault.compCode == MQCC_WARNING ? error.Warning() : error;
}

Expected ExpectedOfOpen(const MqiFault& fault, bool retried) {
    const std::string reason = std::to_string(fault.reason);
    if (fault.compCode == MQCC_WARNING)
        return {"Open", pmrcOK,
                ExpectedError("PIDMMain", "MQA0156: <MQOpen, QName = Q1, reason code = " + reason + ">")
                    .Warning()};
    if (retried) return {"Open"};
    std::string text =
        "Queue Manager open";  // the text formatted last, because the other reasons have no text of their own
    if (fault.reason == 2042)
        text = "MQA0157: <MQOpen attempts exhausted. QName 'Q1', reason code 2042 (Queue already open)>";
    if (fault.reason == 2085)
        text = "MQA0158: <MQOpen attempts exhausted. QName 'Q1', reason code 2085 (Unknown queue name)>";
    return {"Open", pmrcFailure, ExpectedError("PIDMMain", text)};
}

Expected ExpectedOfGet(const MqiFault& fault, MQLONG lengthFound) {
    if (fault.reason == 2033) return {"Read"};  // the wait continues, and a message comes
    if (fault.reason == 2024) return {"Read", pmrcEOF};
    const bool withoutData = fault.leavesLength
                                 ? lengthFound == 0
                                 : fault.effect == Effect::None || fault.effect == Effect::Doomed;
    if (withoutData) return {"Read", pmrcEOF};
    const std::string text = fault.reason == 2080
                                 ? "MQA0161: <Message length > blocksize (1024)>"
                                 : "MQA0165: <Reason code = " + std::to_string(fault.reason) + ">";
    return {"Read", pmrcFailure, ExpectedError("PIDMMain", text).Calling("MQGET")};
}

Expected ExpectedOf(const MqiFailureCase& failure, MQLONG lengthFound) {
    const MqiFault& fault = failure.fault;
    const std::string reason = std::to_string(fault.reason);
    const auto fails = [&](const char* request, const char* function, const std::string& text) {
        return Expected{request, pmrcFailure, WithSeverity(ExpectedError(function, text), fault)};
    };
    switch (fault.verb) {
        case Verb::Connx:
            return {"Open", pmrcFailure,
                    ExpectedError("PIDMMain", "Error received from MQCONNX : " + reason)};
        case Verb::Open: return ExpectedOfOpen(fault, failure.retried);
        case Verb::Get: return ExpectedOfGet(fault, lengthFound);
        case Verb::Cmit:
            return fails("Read", "PIDMMain", "MQA0143: <MQCMIT failed, reason code = " + reason + ">");
        case Verb::Back:
            return fails("Read", "BackOutMQ", "MQA0145: <MQBACK failed, reason code = " + reason + ">");
        case Verb::Close:
            return {"Close", pmrcFailure,
                    ExpectedError("CloseAll",
                                  "MQA0142: <MQCLOSE failed.  QName = Q1. Reason code = " + reason + ">")};
        case Verb::Disc:
            return fails("Close", "CloseAll",
                         "MQA0144: <MQDISC failed. QMName = QM1, reason code = " + reason + ">");
    }
    return {};
}

class MqiFailure : public testing::TestWithParam<MqiFailureCase> {
  protected:
    /// Runs the load without failures before a test creates its own load, because only one
    /// QueueManagerDouble can exist at a time.
    static void SetUpTestSuite() { (void)CallsWithoutFailure(); }

    void CheckReturn(const std::string& request, const Outcome& outcome) const {
        const Expected expected = ExpectedOf(GetParam(), load.queueManager.LengthFound());
        // The queue is empty, so a read that continues to wait gets nothing.
        const bool ends = GetParam().fault.reason == 2033 && GetParam().when == When::EmptyQueue;
        EXPECT_EQ(request, expected.request);
        EXPECT_EQ(outcome.returnCode, ends ? pmrcEOF : expected.returnCode) << outcome.errorText;
        if (expected.error) {
            EXPECT_TRUE(Carries(outcome, *expected.error));
        } else {
            EXPECT_FALSE(outcome.hasErrorText) << outcome.errorText;
        }
    }

    void LetSaveFail() {
        const int nth = NthMessage(GetParam().when);
        load.queueManager.onMessage = [this, nth](int message) {
            if (message == nth)
                load.Files().Add({.call = CallOf(GetParam().saveFault), .file = kCheckpointFile});
        };
    }

    FailingLoad load{LoadPlan{.keywords = GetParam().retried ? "-OWAIT 1 -OTENACITY 2" : "",
                              .stopAfter = kPlan.stopAfter}};
};

TEST_P(MqiFailure, ReturnsWhatItPromisesAndLosesAndDoublesNothing) {
    MqiFault fault = GetParam().fault;
    const bool save = GetParam().saveFault != SaveFault::None;
    if (save) LetSaveFail();
    fault.nth = save ? 1 : Nth(fault.verb, GetParam().when);
    ASSERT_GT(fault.nth, 0) << "the load has no such call";
    load.queueManager.Add(fault);
    load.queueManager.Add(kLostCommit);

    // Besides the fault of the case, only the lost commit can strike.
    bool checked = false;
    load.host.afterRequest = [&](const std::string& request, const Outcome& outcome) {
        if (checked || !load.queueManager.HasStruck(fault.verb, fault.nth)) return;
        checked = true;
        CheckReturn(request, outcome);
    };
    load.RunToTheEnd();
    EXPECT_TRUE(checked) << "the call was never made";
}

std::string NameOfMqiFailure(const testing::TestParamInfo<MqiFailureCase>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(MQCONNX, MqiFailure, testing::ValuesIn(MqiFailureCases(Verb::Connx)),
                         NameOfMqiFailure);
INSTANTIATE_TEST_SUITE_P(MQOPEN, MqiFailure, testing::ValuesIn(MqiFailureCases(Verb::Open)),
                         NameOfMqiFailure);
INSTANTIATE_TEST_SUITE_P(MQGET, MqiFailure, testing::ValuesIn(MqiFailureCases(Verb::Get)), NameOfMqiFailure);
INSTANTIATE_TEST_SUITE_P(MQCMIT, MqiFailure, testing::ValuesIn(MqiFailureCases(Verb::Cmit)),
                         NameOfMqiFailure);
INSTANTIATE_TEST_SUITE_P(MQBACK, MqiFailure, testing::ValuesIn(MqiFailureCases(Verb::Back)),
                         NameOfMqiFailure);
INSTANTIATE_TEST_SUITE_P(MQCLOSE, MqiFailure, testing::ValuesIn(MqiFailureCases(Verb::Close)),
                         NameOfMqiFailure);
INSTANTIATE_TEST_SUITE_P(MQDISC, MqiFailure, testing::ValuesIn(MqiFailureCases(Verb::Disc)),
                         NameOfMqiFailure);

}  // namespace
