// SPDX-License-Identifier: Apache-2.0

// Tests MQPUT and MQPUT1.
#include <cstring>

#include "tests/spoolmq/support/spool_test.h"

namespace {

class PutTest : public SpoolTest {
  protected:
    void SetUp() override { ConnectAndOpen(); }

    Codes PutOne(mqi::MQOD* od, const std::string& body, MQLONG options) {
        Codes codes;
        mqi::MQMD md = NewMd();
        mqi::MQPMO pmo = NewPmo(options);
        Mq().Put1(connection_, od, &md, &pmo, static_cast<MQLONG>(body.size()), body.data(), &codes.compCode,
                  &codes.reason);
        return codes;
    }
};

bool AreEqual(const MQBYTE* a, const MQBYTE* b) {
    return std::memcmp(a, b, 24) == 0;
}

TEST_F(PutTest, IdentifiersAreMadeWhereNoneIsGivenAndNeverRepeated) {
    mqi::MQMD first = NewMd();
    mqi::MQMD second = NewMd();
    ASSERT_EQ(kDone, PutWith(connection_, object_, "1", &first));
    ASSERT_EQ(kDone, PutWith(connection_, object_, "2", &second));
    EXPECT_EQ("AMQ QM1         ", std::string(reinterpret_cast<const char*>(first.MsgId), 16));
    EXPECT_FALSE(AreEqual(first.MsgId, second.MsgId));
    mqi::MQMD third = second;
    ASSERT_EQ(kDone, PutWith(connection_, object_, "3", &third));
    EXPECT_TRUE(AreEqual(third.MsgId, second.MsgId));
    ASSERT_EQ(kDone, PutWith(connection_, object_, "4", &third,
                             kNoSync | mqi::MQPMO_NEW_MSG_ID | mqi::MQPMO_NEW_CORREL_ID));
    EXPECT_FALSE(AreEqual(third.MsgId, second.MsgId));
    EXPECT_FALSE(AreEqual(third.CorrelId, second.CorrelId));
}

TEST_F(PutTest, TheContextRecordsWhoPutTheMessageAndWhen) {
    mqi::MQMD md = NewMd();
    ASSERT_EQ(kDone, PutWith(connection_, object_, "m", &md));
    EXPECT_EQ(0, std::string(md.PutApplName, 28).find("spoolmq_verbs_test"))
        << std::string(md.PutApplName, 28);
    EXPECT_EQ(8U, std::string(md.PutDate, 8).find_first_not_of("0123456789") == std::string::npos ? 8U : 0U);
    EXPECT_EQ('2', md.PutDate[0]);
    EXPECT_NE(0, md.PutApplType);
    mqi::MQMD noContext = NewMd();
    ASSERT_EQ(kDone, PutWith(connection_, object_, "m", &noContext, kNoSync | mqi::MQPMO_NO_CONTEXT));
    EXPECT_EQ(std::string(28, ' '), std::string(noContext.PutApplName, 28));
    EXPECT_EQ(0, noContext.PutApplType);
}

TEST_F(PutTest, EveryPublishedVersionOfTheOptionsIsAcceptedAndNothingAfterItIsTouched) {
    const std::size_t lengths[] = {128, 160, 184};
    for (MQLONG version = 1; version <= 3; ++version) {
        const std::size_t length = lengths[version - 1];
        struct {
            mqi::MQPMO pmo;
            unsigned char after[16];
        } options{NewPmo(kNoSync, version), {}};
        auto* bytes = reinterpret_cast<unsigned char*>(&options);
        std::memset(bytes + length, 0xEE, sizeof options - length);
        mqi::MQMD md = NewMd();
        Codes codes;
        Mq().Put(connection_, object_, &md, &options.pmo, 1, "m", &codes.compCode, &codes.reason);
        ASSERT_EQ(kDone, codes) << version;
        EXPECT_EQ("Q" + std::string(47, ' '), std::string(options.pmo.ResolvedQName, 48));
        for (std::size_t i = length; i < sizeof options; ++i) {
            ASSERT_EQ(0xEE, bytes[i]) << version << " at " << i;
        }
    }
}

TEST_F(PutTest, WrongArgumentsAreRefusedAndPutNothing) {
    mqi::MQMD md = NewMd();
    mqi::MQPMO pmo = NewPmo(kNoSync);
    Codes codes;
    const auto put = [&](MQLONG length, const void* buffer) {
        Mq().Put(connection_, object_, &md, &pmo, length, buffer, &codes.compCode, &codes.reason);
        return codes;
    };
    EXPECT_EQ(FailedWith(mqi::MQRC_BUFFER_LENGTH_ERROR), put(-1, "m"));
    EXPECT_EQ(FailedWith(mqi::MQRC_BUFFER_ERROR), put(1, nullptr));
    pmo.Version = 4;
    EXPECT_EQ(FailedWith(mqi::MQRC_PMO_ERROR), put(1, "m"));
    pmo = NewPmo(kSync | kNoSync);
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTIONS_ERROR), put(1, "m"));
    pmo = NewPmo(kNoSync);
    md.Version = 3;
    EXPECT_EQ(FailedWith(mqi::MQRC_MD_ERROR), put(1, "m"));
    md = NewMd();
    md.Persistence = 3;
    EXPECT_EQ(FailedWith(mqi::MQRC_PERSISTENCE_ERROR), put(1, "m"));
    md = NewMd();
    md.Priority = 10;
    EXPECT_EQ(FailedWith(mqi::MQRC_PRIORITY_ERROR), put(1, "m"));
    EXPECT_TRUE(MessageFiles().empty());
}

TEST_F(PutTest, LimitsOfQueueAndQueueManagerAreEnforced) {
    SetQueue("max_message_length = 5\nmax_depth = 2\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_MSG_TOO_BIG_FOR_Q), Put(connection_, object_, "123456"));
    EXPECT_EQ(kDone, Put(connection_, object_, "12345"));
    EXPECT_EQ(kDone, Put(connection_, object_, "", kSync));
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_FULL), Put(connection_, object_, ""));
    SetQmgr("max_message_length = 3\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_MSG_TOO_BIG_FOR_Q_MGR), Put(connection_, object_, "1234"));
    SetQueue("put = disabled\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_PUT_INHIBITED), Put(connection_, object_, "1"));
}

TEST_F(PutTest, AHandleNotOpenForOutputIs2039) {
    MQHOBJ input = -1;
    ASSERT_EQ(kDone, Open(connection_, "Q", kInputShared, &input));
    EXPECT_EQ(FailedWith(mqi::MQRC_NOT_OPEN_FOR_OUTPUT), Put(connection_, input, "m"));
}

TEST_F(PutTest, QuiescingFailsOnlyCallsWithFailIfQuiescing) {
    SetQmgr("state = quiescing\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_MGR_QUIESCING),
              Put(connection_, object_, "m", kNoSync | mqi::MQPMO_FAIL_IF_QUIESCING));
    EXPECT_EQ(kDone, Put(connection_, object_, "m"));
}

TEST_F(PutTest, Put1OpensPutsAndCloses) {
    mqi::MQOD od = NewOd("Q", 3);
    EXPECT_EQ(kDone, PutOne(&od, "one", kNoSync));
    EXPECT_EQ("Q" + std::string(47, ' '), std::string(od.ResolvedQName, 48));
    EXPECT_EQ(kDone, PutOne(&od, "two", kSync));
    EXPECT_EQ(1U, MessageFiles().size());
    EXPECT_EQ(kDone, Commit(connection_));
    EXPECT_EQ(std::vector<std::string>({"one", "two"}), Drain());
}

TEST_F(PutTest, Put1OnAnUnknownQueueIs2085) {
    mqi::MQOD od = NewOd("NOWHERE");
    EXPECT_EQ(FailedWith(MQRC_UNKNOWN_OBJECT_NAME), PutOne(&od, "m", kNoSync));
    od.Version = 9;
    EXPECT_EQ(FailedWith(mqi::MQRC_OD_ERROR), PutOne(&od, "m", kNoSync));
}

}  // namespace
