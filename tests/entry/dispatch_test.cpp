// SPDX-License-Identifier: Apache-2.0

// Tests which request is served in which phase of the module, and what each request writes to the trace.
#include <gmock/gmock.h>

#include <functional>
#include <ostream>

#include "tests/support/module_fixture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

namespace {

struct Request {
    const char* word;  ///< the name of the option in the trace
    std::function<Outcome(HostRequests&)> send;
};

void PrintTo(const Request& request, std::ostream* out) {
    *out << request.word;
}

/// Returns all requests that need an initialized module.
std::vector<Request> StatefulRequests() {
    return {
        {"Open", [](HostRequests& host) { return host.Open(); }},
        {"Close", [](HostRequests& host) { return host.Close(); }},
        {"Close", [](HostRequests& host) { return host.CloseR(); }},
        {"Read", [](HostRequests& host) -> Outcome { return host.Read(); }},
        {"Write", [](HostRequests& host) { return host.Write(); }},
        {"GetPos", [](HostRequests& host) -> Outcome { return host.GetPos(); }},
        {"SetPos",
         [](HostRequests& host) {
             return host.SetPos({1, 0, 0});
         }},
        {"Shut", [](HostRequests& host) { return host.Shut(); }},
        {"GetAttribute", [](HostRequests& host) { return host.GetAttribute("ANY", 11); }},
        {"GetAttribute", [](HostRequests& host) { return host.GetAttribute("ANY", 12); }},
        {"PutAttribute", [](HostRequests& host) { return host.PutAttribute("GEN_EOF", "", 13); }},
        {"PutAttribute", [](HostRequests& host) { return host.PutAttribute("GEN_EOF", "", 14); }},
    };
}

class StatefulRequestTest : public ModuleFixture, public testing::WithParamInterface<Request> {};

TEST_P(StatefulRequestTest, BeforeInitFailsAsNotInitialized) {
    const Outcome outcome = GetParam().send(*this);
    EXPECT_TRUE(FailsWith(outcome, ExpectedError("PIDMMain", "not initialized").Calling(GetParam().word)));
    EXPECT_THAT(mq.calls, IsEmpty());
}

TEST_P(StatefulRequestTest, AfterShutFailsAsNotInitialized) {
    InitAndOpenTraced(2);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    mq.Forget();
    trace.Skip();
    const ExpectedError error = ExpectedError("PIDMMain", "not initialized").Calling(GetParam().word);
    EXPECT_TRUE(FailsWith(GetParam().send(*this), error));
    EXPECT_THAT(mq.calls, IsEmpty());

    std::vector<std::string> expected = {
        InfoLine("PIDMMain", "entered for option '" + std::string(GetParam().word) + "'")};
    for (const std::string& line : error.TraceLines())
        expected.push_back(line);
    expected.push_back(InfoLine("PIDMMain", "Returning to Hostlink, rc=34"));
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(expected));
}

TEST_P(StatefulRequestTest, WhenInitializedIsTracedOnEntryAndReturnAtLevelTwo) {
    InitTraced(2);
    const Outcome outcome = GetParam().send(*this);
    const std::vector<std::string> lines = trace.NewLines();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines.front(),
              InfoLine("PIDMMain", "entered for option '" + std::string(GetParam().word) + "'"));
    EXPECT_EQ(lines.back(),
              InfoLine("PIDMMain", "Returning to Hostlink, rc=" + std::to_string(outcome.returnCode)));
}

TEST_P(StatefulRequestTest, WhenInitializedIsNotTracedOnEntryAndReturnAtLevelOne) {
    InitTraced(1);
    GetParam().send(*this);
    const std::vector<std::string> lines = trace.NewLines();
    EXPECT_THAT(lines, Not(Contains(testing::HasSubstr("entered for option"))));
    EXPECT_THAT(lines, Not(Contains(testing::HasSubstr("Returning to Hostlink"))));
}

INSTANTIATE_TEST_SUITE_P(Each, StatefulRequestTest, testing::ValuesIn(StatefulRequests()),
                         [](const testing::TestParamInfo<Request>& test) {
                             return test.param.word + std::to_string(test.index);
                         });

using DispatchTest = ModuleFixture;

TEST_F(DispatchTest, WriteIsNotSupportedAndSaysNothing) {
    InitAndOpenTraced(2);
    const Outcome outcome = Write();
    EXPECT_EQ(outcome.returnCode, pmrcNotSupported);
    EXPECT_FALSE(outcome.hasErrorText);
    EXPECT_THAT(trace.NewLines(), ElementsAre(InfoLine("PIDMMain", "entered for option 'Write'"),
                                              InfoLine("PIDMMain", "Returning to Hostlink, rc=24")));
}

TEST_F(DispatchTest, GetAttributeIsNotSupportedAndNamesTheAttributeAtLevelOne) {
    InitTraced(1);
    for (const std::uint32_t option : {11U, 12U}) {
        const Outcome outcome = GetAttribute("CHARSET_NAME", option);
        EXPECT_EQ(outcome.returnCode, pmrcNotSupported);
        EXPECT_FALSE(outcome.hasErrorText);
        EXPECT_THAT(trace.NewLines(), ElementsAre(InfoLine("PIDMMain", "Attribute name: 'CHARSET_NAME'")));
    }
}

TEST_F(DispatchTest, UnsupportedOptionsAreRefusedInEveryState) {
    for (const std::uint32_t option : {0U, 15U, 16U, 255U, 0x80000000U, 0xFFFFFFFFU}) {
        const Outcome outcome = Option(option);
        EXPECT_EQ(outcome.returnCode, pmrcNotSupported) << option;
        EXPECT_FALSE(outcome.hasErrorText) << option;
    }
    InitAndOpen();
    EXPECT_EQ(Option(0).returnCode, pmrcNotSupported);
    EXPECT_EQ(Option(15).returnCode, pmrcNotSupported);
}

TEST_F(DispatchTest, UnsupportedOptionIsTracedAtLevelZeroWhenATraceFileIsOpen) {
    InitTraced(1);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    trace.Skip();
    EXPECT_EQ(Option(15).returnCode, pmrcNotSupported);
    EXPECT_THAT(trace.NewLines(), ElementsAre(InfoLine("PIDMMain", "unsupported request: 15")));
}

TEST_F(DispatchTest, UnsupportedOptionIsTracedAsASignedNumberWithoutAnEntryLine) {
    InitTraced(2);
    Option(0);
    Option(0xFFFFFFFFU);
    EXPECT_THAT(trace.NewLines(), ElementsAre(InfoLine("PIDMMain", "unsupported request: 0"),
                                              InfoLine("PIDMMain", "Returning to Hostlink, rc=24"),
                                              InfoLine("PIDMMain", "unsupported request: -1"),
                                              InfoLine("PIDMMain", "Returning to Hostlink, rc=24")));
}

}  // namespace
