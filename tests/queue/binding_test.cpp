// The MQ library that is bound at the first connect: where it is looked for, and what a host sees without it.
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/support/module_fixture.h"

using testing::HasSubstr;

namespace {

ExpectedError ConnectError(int reason) {
    return {"PIDMMain", "Error received from MQCONNX : " + std::to_string(reason)};
}

class BindingTest : public ModuleFixture {
  protected:
    /// The level-1 warnings of the requests since the last look.
    std::vector<std::string> NewWarnings() {
        std::vector<std::string> warnings;
        for (const std::string& line : trace.NewLines()) {
            if (line.find("(!warning!): ") != std::string::npos) warnings.push_back(line);
        }
        return warnings;
    }
};

TEST_F(BindingTest, MissingLibraryIsReason2495AndOneWarningNamesIt) {
    InitTraced(1);
    SetEnvironment("MQAMOD_MQ_LIBRARY", "no_such_library");
    EXPECT_TRUE(FailsWith(Open(), ConnectError(2495)));
    const std::vector<std::string> warnings = NewWarnings();
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_THAT(warnings[0], HasSubstr("no_such_library"));
}

TEST_F(BindingTest, FileThatIsNoLibraryIsReason2495AndOneWarningNamesIt) {
    InitTraced(1);
    WriteFile("not_a_library.so", "text");
    const std::string path = (std::filesystem::current_path() / "not_a_library.so").string();
    SetEnvironment("MQAMOD_MQ_LIBRARY", path);
    EXPECT_TRUE(FailsWith(Open(), ConnectError(2495)));
    const std::vector<std::string> warnings = NewWarnings();
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_THAT(warnings[0], HasSubstr(path));
}

TEST_F(BindingTest, LibraryWithoutAVerbIsReason2497AndOneWarningNamesBoth) {
    InitTraced(1);
    SetEnvironment("MQAMOD_MQ_LIBRARY", MqDoubleWithoutMqbackPath());
    EXPECT_TRUE(FailsWith(Open(), ConnectError(2497)));
    const std::vector<std::string> warnings = NewWarnings();
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_THAT(warnings[0], HasSubstr(MqDoubleWithoutMqbackPath()));
    EXPECT_THAT(warnings[0], HasSubstr("MQBACK"));
}

TEST_F(BindingTest, FailsAlikeWithoutATrace) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    SetEnvironment("MQAMOD_MQ_LIBRARY", "no_such_library");
    EXPECT_TRUE(FailsWith(Open(), ConnectError(2495)));
    EXPECT_TRUE(FailsWith(Read(), ExpectedError("PIDMMain",
                                                "MQA0160: <Read failed.  Queue not open.  QMName = QM1. "
                                                "QName = Q1.>")));
    EXPECT_EQ(Shut().returnCode, pmrcOK);
}

TEST_F(BindingTest, EachFailingConnectLooksAgainAndWarnsOnce) {
    InitTraced(1);
    SetEnvironment("MQAMOD_MQ_LIBRARY", "no_such_library");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Open().returnCode, pmrcFailure);
        EXPECT_EQ(NewWarnings().size(), 1U);
    }
    SetEnvironment("MQAMOD_MQ_LIBRARY", MqDoublePath());
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_THAT(NewWarnings(), testing::IsEmpty());
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN");
}

TEST_F(BindingTest, OnceBoundTheLibraryIsKept) {
    InitAndOpen();
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    SetEnvironment("MQAMOD_MQ_LIBRARY", "no_such_library");
    InitAndOpen();
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN CLOSE DISC CONNX OPEN");
}

/// Without the variable IBM's names are looked for; they can be told only where no IBM MQ is installed.
class IbmNamesTest : public BindingTest {
  protected:
    void SetUp() override {
        BindingTest::SetUp();
        for (const char* folder : {"/opt/mqm/lib64", "C:\\Program Files\\IBM\\MQ\\bin64"}) {
            if (FileExists(folder)) GTEST_SKIP() << "IBM MQ is installed in " << folder;
        }
        SetEnvironment("MQAMOD_MQ_LIBRARY", "");
    }

    /// Whether the warning of a failing Open names the client's library before the queue manager's own.
    bool ClientLibraryIsTriedFirst() {
        trace.Skip();
        EXPECT_TRUE(FailsWith(Open(), ConnectError(2495)));
        const std::vector<std::string> warnings = NewWarnings();
        EXPECT_EQ(warnings.size(), 1U);
        if (warnings.size() != 1) return false;
        const std::size_t client = warnings[0].find("mqic");
        const std::size_t server = warnings[0].find("mqm");
        EXPECT_NE(client, std::string::npos) << warnings[0];
        EXPECT_NE(server, std::string::npos) << warnings[0];
        return client < server;
    }
};

TEST_F(IbmNamesTest, LocalConnectionTriesTheQueueManagersOwnLibraryFirst) {
    InitTraced(1);
    EXPECT_FALSE(ClientLibraryIsTriedFirst());
}

TEST_F(IbmNamesTest, ChannelAndServerMakeTheClientLibraryFirst) {
    InitTraced(1, "-CHNL C -SRVR s");
    EXPECT_TRUE(ClientLibraryIsTriedFirst());
}

TEST_F(IbmNamesTest, EachClientVariableMakesTheClientLibraryFirst) {
    InitTraced(1);
    for (const char* variable : {"MQSERVER", "MQCHLLIB", "MQCHLTAB", "MQCCDTURL"}) {
        SetEnvironment(variable, "x");
        EXPECT_TRUE(ClientLibraryIsTriedFirst()) << variable;
        SetEnvironment(variable, "");
    }
    EXPECT_FALSE(ClientLibraryIsTriedFirst());
}

}  // namespace
