// SPDX-License-Identifier: Apache-2.0

// Tests the journal library between the module and an MQ library: every record is in the journal when its message is
// committed, all calls reach the MQ library unchanged, and without a journal there is no commit.
#include <filesystem>

#include "mqjournal/journal/format.h"
#include "mqjournal/journal/reader.h"
#include "platform/environment.h"
#include "platform/library.h"
#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr MQLONG kFileSystemError = 2208;

class JournalLibrary : public RecoveryFixture {
  protected:
    void SetUp() override {
        RecoveryFixture::SetUp();
        checkpoint_ = (std::filesystem::current_path() / kCkFile).string();
        platform::SetEnvironment("MQAMOD_MQ_LIBRARY", LibraryPath());
        platform::SetEnvironment("MQAMJOURNAL_MQ_LIBRARY", MqDoublePath());
        platform::SetEnvironment("MQAMJOURNAL_CHECKPOINT", checkpoint_);
    }
    void TearDown() override {
        platform::SetEnvironment("MQAMJOURNAL_MQ_LIBRARY", "");
        platform::SetEnvironment("MQAMJOURNAL_CHECKPOINT", "");
        RecoveryFixture::TearDown();
    }

    static std::string LibraryPath() { return PathOnSystem(JOURNAL_LIBRARY); }

    /// Returns a function of the library.
    template <typename Function>
    static Function Find(const char* name) {
        std::string error;
        const platform::LibraryHandle library = platform::OpenLibrary(LibraryPath(), error);
        EXPECT_NE(library, nullptr) << error;
        return reinterpret_cast<Function>(platform::FindFunction(library, name));
    }
    static std::string LastError() { return Find<const char* (*)()>("MqamJournalError")(); }
    [[nodiscard]] int Call(const char* name) const {
        return Find<int (*)(const char*)>(name)(checkpoint_.c_str());
    }

    /// Returns the content of the journal.
    [[nodiscard]] std::string Journal() const {
        std::string error;
        const mqjournal::JournalScan scan = mqjournal::ScanJournal(checkpoint_);
        if (scan.shape != mqjournal::JournalShape::kIntact) return "none";
        EXPECT_TRUE(mqjournal::CopyContent(checkpoint_, scan, "copy", error)) << error;
        return ReadFile("copy");
    }

    /// Begins and records the journal at each later commit.
    void BeginWithCheckpoint() {
        BeginCheckpointing();
        TakeCheckpoint();
        PassOver();
        mq.hook = [this](const MqCall& call) {
            if (call.verb == Verb::Cmit) atCommit_.push_back(Journal());
        };
    }

    std::string checkpoint_;
    std::vector<std::string> atCommit_;
};

TEST_F(JournalLibrary, HasEachRecordWhenItsMessageIsCommitted) {
    BeginWithCheckpoint();
    Deliver({"one", "two"});
    TakeCheckpoint();
    const std::string large(60000, 'L');
    Deliver({"three", large});
    EXPECT_THAT(atCommit_, ElementsAre(CkBytes(1, {"one"}), CkBytes(1, {"one", "two"}),
                                       CkBytes(2, {"two", "three"}), CkBytes(2, {"two", "three", large})));
    EXPECT_EQ(mq.Sequence(), "GET CMIT GET CMIT GET CMIT GET CMIT");
}

TEST_F(JournalLibrary, HasTheRewrittenFileAfterAReplay) {
    BeginReplay(5, {"one", "two"});
    mq.hook = [this](const MqCall& call) {
        if (call.verb == Verb::Cmit) atCommit_.push_back(Journal());
    };
    EXPECT_TRUE(Gives(Read(), "one"));
    EXPECT_TRUE(Gives(Read(), "two"));
    TakePosition();
    Deliver({"three"});
    EXPECT_THAT(atCommit_, ElementsAre(CkBytes(6, {"two", "three"})));
}

TEST_F(JournalLibrary, PassesEveryCallOn) {
    BeginCheckpointing("-MQEX");
    TakeCheckpoint();
    mq.FailGet(MQCC_FAILED, MQRC_TRUNCATED_MSG_FAILED, "x");
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(Close().returnCode, pmrcOK);
    const std::vector<MqCall> connects = mq.Calls(Verb::Connx);
    EXPECT_EQ(mq.Calls(Verb::Close).size(), 1U);
    EXPECT_EQ(mq.Calls(Verb::Disc).size(), 1U);
}

TEST_F(JournalLibrary, DoesNotCommitWhatItCannotSave) {
    BeginWithCheckpoint();
    std::filesystem::create_directories(mqjournal::JournalScratchPath(checkpoint_) + "/sub");
    mq.PutMessage("one");
    EXPECT_TRUE(FailsWith(Read(), ExpectedError("PIDMMain", "MQA0143: <MQCMIT failed, reason code = 2208>")));
    EXPECT_EQ(mq.Count(Verb::Cmit), 0U);
    EXPECT_THAT(LastError(), HasSubstr(mqjournal::JournalScratchPath(checkpoint_)));
}

TEST_F(JournalLibrary, NeedsThePathOfTheCheckpointFile) {
    platform::SetEnvironment("MQAMJOURNAL_CHECKPOINT", "");
    InitTraced(1, "-CKFILE ck.dat");
    EXPECT_TRUE(FailsWith(Open(), ExpectedError("PIDMMain", "Error received from MQCONNX : 2208")));
    EXPECT_THAT(LastError(), HasSubstr("MQAMJOURNAL_CHECKPOINT is not set"));
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(JournalLibrary, RestoresWhatALossOfPowerTookFromTheFile) {
    BeginWithCheckpoint();
    Deliver({"one", "two"});
    const std::string whole = ReadFile(kCkFile);
    EXPECT_EQ(Call("MqamJournalRestore"), 0);
    LoadAnotherModule();
    for (const std::string& left : {std::string(), std::string(whole.size(), '\0'), whole.substr(0, 9),
                                    whole + CkRecord("three"), CkBytes(7, {"older"})}) {
        WriteFile(kCkFile, left);
        EXPECT_EQ(Call("MqamJournalRestore"), 1);
        EXPECT_EQ(ReadFile(kCkFile), whole);
    }
    std::filesystem::remove(kCkFile);
    EXPECT_EQ(Call("MqamJournalRestore"), 1);
    EXPECT_EQ(ReadFile(kCkFile), whole);
}

TEST_F(JournalLibrary, LeavesTheFileAloneWithoutAJournalAndIfThatIsDamaged) {
    WriteFile(kCkFile, CkBytes(1, {"one"}));
    EXPECT_EQ(Call("MqamJournalRestore"), 0);
    WriteFile(mqjournal::JournalPath(kCkFile), "no journal");
    EXPECT_EQ(Call("MqamJournalRestore"), -1);
    EXPECT_THAT(LastError(), HasSubstr("does not begin like a journal"));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"one"}));
}

TEST_F(JournalLibrary, ResetsAndRemovesTheJournal) {
    BeginWithCheckpoint();
    Deliver({"one"});
    PreserveRestartInfo("YES");
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Journal(), CkBytes(1, {"one"}));
    EXPECT_EQ(Call("MqamJournalReset"), 0);
    EXPECT_EQ(Journal(), "");
    EXPECT_EQ(Call("MqamJournalRemove"), 0);
    EXPECT_EQ(Journal(), "none");
    EXPECT_EQ(Call("MqamJournalRemove"), 0);
}

}  // namespace
