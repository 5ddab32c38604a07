// SPDX-License-Identifier: Apache-2.0

// Tests MQCONN, MQCONNX and MQDISC: which queue manager they reach, which handle they return, and which
// thread may use it.
#include <cstring>
#include <thread>

#include "platform/environment.h"
#include "tests/spoolmq/support/spool_test.h"

namespace {

class ConnectTest : public SpoolTest {
  protected:
    [[nodiscard]] std::filesystem::path Path(const std::string& name) const {
        return std::filesystem::path(Root()) / name;
    }
};

Codes Connx(const MqLibrary& library, const std::string& name, mqi::MQCNO* cno, MQHCONN* connection) {
    char field[48];
    std::memset(field, ' ', sizeof field);
    std::memcpy(field, name.data(), name.size());
    Codes codes;
    library.Connx(field, cno, connection, &codes.compCode, &codes.reason);
    return codes;
}

TEST_F(ConnectTest, ANamedQueueManagerConnectsAndTheHandleIsUnusableAfterDisconnect) {
    ASSERT_EQ(kDone, Connect("QM1", &connection_));
    EXPECT_GT(connection_, 0);
    EXPECT_EQ(kDone, Disconnect(&connection_));
    EXPECT_EQ(-1, connection_);
    EXPECT_EQ(FailedWith(mqi::MQRC_HCONN_ERROR), Disconnect(&connection_));
}

TEST_F(ConnectTest, NothingIsLeftInTheDirectoryAfterDisconnect) {
    ASSERT_EQ(kDone, Connect("QM1", &connection_));
    EXPECT_FALSE(AreUnitsEmpty());
    ASSERT_EQ(kDone, Disconnect(&connection_));
    EXPECT_TRUE(AreUnitsEmpty());
}

TEST_F(ConnectTest, AnUnknownQueueManagerIs2058) {
    EXPECT_EQ(FailedWith(MQRC_Q_MGR_NAME_ERROR), Connect("NOWHERE", &connection_));
    EXPECT_EQ(FailedWith(MQRC_Q_MGR_NAME_ERROR), Connect("../QM1", &connection_));
    EXPECT_EQ(-1, connection_);
}

TEST_F(ConnectTest, WithoutASpoolDirectoryAConnectIs2059) {
    platform::SetEnvironment("SPOOLMQ_DIR", "");
    EXPECT_EQ(FailedWith(MQRC_Q_MGR_NOT_AVAILABLE), Connect("QM1", &connection_));
}

TEST_F(ConnectTest, ABlankNameMeansTheOnlyQueueManager) {
    EXPECT_EQ(kDone, Connect("", &connection_));
}

TEST_F(ConnectTest, ABlankNameMeansTheDefaultOfSeveralQueueManagers) {
    std::filesystem::create_directory(Path("QM2"));
    EXPECT_EQ(FailedWith(MQRC_Q_MGR_NAME_ERROR), Connect("", &connection_));
    WriteAll(Path("QM2/qmgr.ini"), "default = yes\n");
    ASSERT_EQ(kDone, Connect("", &connection_));
    // A thread that connects again gets the same handle, but only for the same queue manager.
    MQHCONN again = -1;
    EXPECT_EQ(FailedWith(mqi::MQRC_ANOTHER_Q_MGR_CONNECTED), Connect("QM1", &again));
    EXPECT_EQ(WarnedWith(mqi::MQRC_ALREADY_CONNECTED), Connect("QM2", &again));
    EXPECT_EQ(connection_, again);
}

TEST_F(ConnectTest, ANameIsReadUpToItsFirstNul) {
    char field[48];
    std::memset(field, 'x', sizeof field);
    std::memcpy(field, "QM1", 4);
    Codes codes;
    Mq().Conn(field, &connection_, &codes.compCode, &codes.reason);
    EXPECT_EQ(kDone, codes);
}

TEST_F(ConnectTest, AThreadCanHaveSeveralSharedHandles) {
    MQHCONN second = -1;
    ASSERT_EQ(kDone, ConnectShared("QM1", &connection_));
    ASSERT_EQ(kDone, ConnectShared("QM1", &second));
    EXPECT_NE(connection_, second);
    EXPECT_EQ(kDone, Disconnect(&second));
}

TEST_F(ConnectTest, EachStateOfTheQueueManagerHasItsReason) {
    SetQmgr("state = quiescing\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_MGR_QUIESCING), Connect("QM1", &connection_));
    SetQmgr("state = stopping\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_MGR_STOPPING), Connect("QM1", &connection_));
    SetQmgr("state = ended\n");
    EXPECT_EQ(FailedWith(MQRC_Q_MGR_NOT_AVAILABLE), Connect("QM1", &connection_));
    SetQmgr("state = running\n");
    EXPECT_EQ(kDone, Connect("QM1", &connection_));
}

TEST_F(ConnectTest, AnInvalidAttributeFileIsReportedAndIs2195) {
    SetQmgr("# comment\nstate = sleeping\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(FailedWith(mqi::MQRC_UNEXPECTED_ERROR), Connect("QM1", &connection_));
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos,
              printed.find("qmgr.ini, line 2: state is \"sleeping\" but takes one of: running "
                           "quiescing stopping ended"))
        << printed;
}

TEST_F(ConnectTest, EveryPublishedVersionOfTheOptionsIsAcceptedAndNothingAfterItIsTouched) {
    const std::size_t lengths[] = {12, 24, 152, 168, 200, 224, 256, 272};
    for (MQLONG version = 1; version <= 8; ++version) {
        const std::size_t length = lengths[version - 1];
        struct {
            mqi::MQCNO cno;
            unsigned char after[16];
        } options{NewCno(version), {}};
        options.cno.Options = mqi::MQCNO_HANDLE_SHARE_BLOCK;
        auto* bytes = reinterpret_cast<unsigned char*>(&options);
        std::memset(bytes + length, 0xEE, sizeof options - length);
        MQHCONN connection = -1;
        EXPECT_EQ(kDone, Connx(Mq(), "QM1", &options.cno, &connection)) << version;
        for (std::size_t i = length; i < sizeof options; ++i) {
            ASSERT_EQ(0xEE, bytes[i]) << version << " at " << i;
        }
        EXPECT_EQ(version >= 5, options.cno.ConnectionId[0] == 'A' && version >= 5) << version;
        EXPECT_EQ(kDone, Disconnect(&connection));
    }
}

TEST_F(ConnectTest, OptionsOfUnknownVersionOrNameAre2139) {
    for (const MQLONG version : {0, 9, -1}) {
        mqi::MQCNO cno = NewCno(version);
        EXPECT_EQ(FailedWith(mqi::MQRC_CNO_ERROR), Connx(Mq(), "QM1", &cno, &connection_)) << version;
    }
    mqi::MQCNO cno = NewCno();
    cno.StrucId[3] = 'X';
    EXPECT_EQ(FailedWith(mqi::MQRC_CNO_ERROR), Connx(Mq(), "QM1", &cno, &connection_));
}

TEST_F(ConnectTest, TwoBindingsOrTwoSharingsAre2046) {
    mqi::MQCNO cno = NewCno();
    cno.Options = mqi::MQCNO_CLIENT_BINDING | mqi::MQCNO_LOCAL_BINDING;
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTIONS_ERROR), Connx(Mq(), "QM1", &cno, &connection_));
    cno.Options = mqi::MQCNO_HANDLE_SHARE_BLOCK | mqi::MQCNO_HANDLE_SHARE_NO_BLOCK;
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTIONS_ERROR), Connx(Mq(), "QM1", &cno, &connection_));
}

TEST_F(ConnectTest, AnUnsharedHandleIs2018OnAnotherThreadAndASharedOneWorks) {
    ConnectAndOpen();
    MQHCONN shared = -1;
    ASSERT_EQ(kDone, ConnectShared("QM1", &shared));
    Codes onOther;
    Codes sharedOnOther;
    std::thread([&] {
        onOther = Commit(connection_);
        sharedOnOther = Commit(shared);
    }).join();
    EXPECT_EQ(FailedWith(mqi::MQRC_HCONN_ERROR), onOther);
    EXPECT_EQ(kDone, sharedOnOther);
    EXPECT_EQ(kDone, Disconnect(&shared));
}

TEST_F(ConnectTest, ANoBlockHandleInUseIs2219) {
    mqi::MQCNO cno = NewCno();
    cno.Options = mqi::MQCNO_HANDLE_SHARE_NO_BLOCK;
    ASSERT_EQ(kDone, Connx(Mq(), "QM1", &cno, &connection_));
    ASSERT_EQ(kDone, Open(connection_, "Q", kInputShared, &object_));
    std::thread waiting([&] {
        mqi::MQGMO gmo = NewGmo(kNoSync | kWait);
        gmo.WaitInterval = 60000;
        Got got;
        do {
            got = GetWith(connection_, object_, NewMd(), gmo);
        } while (got.codes.reason == mqi::MQRC_CALL_IN_PROGRESS);
        EXPECT_EQ("end", got.body);
    });
    Codes codes = kDone;
    while (codes == kDone) {
        codes = Commit(connection_);
    }
    EXPECT_EQ(FailedWith(mqi::MQRC_CALL_IN_PROGRESS), codes);
    MQHCONN other = -1;
    MQHOBJ object = -1;
    ConnectAgain(&other, &object);
    EXPECT_EQ(kDone, Put(other, object, "end"));
    waiting.join();
    EXPECT_EQ(kDone, Disconnect(&other));
}

TEST_F(ConnectTest, TheEndOfAThreadBacksOutItsUnsharedConnection) {
    MQHCONN other = -1;
    MQHOBJ object = -1;
    ConnectAgain(&other, &object);
    ASSERT_EQ(kDone, Put(other, object, "m"));
    std::thread([&] {
        MQHCONN own = -1;
        MQHOBJ queue = -1;
        EXPECT_EQ(kDone, Connect("QM1", &own));
        EXPECT_EQ(kDone, Open(own, "Q", kInputShared, &queue));
        EXPECT_EQ("m", Get(own, queue, kSync).body);
    }).join();
    EXPECT_EQ(kDone, Disconnect(&other));
    EXPECT_TRUE(AreUnitsEmpty());
    EXPECT_EQ(std::vector<std::string>({"m~1"}), Drain());
}

// ---- client connections, made by the client library, the option or the environment

mqi::MQCDStart NewCd(MQLONG maxMessageLength) {
    mqi::MQCDStart cd{};
    cd.Version = 6;
    cd.ChannelType = 6;
    cd.TransportType = 2;
    cd.MaxMsgLength = maxMessageLength;
    std::memcpy(cd.ChannelName, "APP.SVRCONN", 11);
    std::memcpy(cd.ConnectionName, "mq.example.com(1414)", 20);
    return cd;
}

Codes ConnectClient(const MqLibrary& library, MQLONG options, mqi::MQCDStart* cd, MQHCONN* connection) {
    mqi::MQCNO cno = NewCno(2);
    cno.Options = options;
    cno.ClientConnPtr = cd;
    return Connx(library, "QM1", &cno, connection);
}

TEST_F(ConnectTest, AClientBufferAboveTheChannelLimitIs2010) {
    mqi::MQCDStart cd = NewCd(1000);
    ASSERT_EQ(kDone, ConnectClient(MqClient(), 0, &cd, &connection_));
    Codes codes;
    mqi::MQOD od = NewOd("Q");
    mqi::MQMD md = NewMd();
    mqi::MQGMO gmo = NewGmo(kNoSync);
    MQLONG length = 0;
    char buffer[1001];
    MqClient().Open(connection_, &od, kInputShared, &object_, &codes.compCode, &codes.reason);
    ASSERT_EQ(kDone, codes);
    MqClient().Get(connection_, object_, &md, &gmo, 1001, buffer, &length, &codes.compCode, &codes.reason);
    EXPECT_EQ(FailedWith(mqi::MQRC_DATA_LENGTH_ERROR), codes);
    MqClient().Get(connection_, object_, &md, &gmo, 1000, buffer, &length, &codes.compCode, &codes.reason);
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), codes);
    MqClient().Disc(&connection_, &codes.compCode, &codes.reason);
}

TEST_F(ConnectTest, ALocalConnectionHasNoChannelLimitEvenWithAChannelDefinition) {
    mqi::MQCDStart cd = NewCd(1000);
    ASSERT_EQ(kDone, ConnectClient(Mq(), 0, &cd, &connection_));
    ASSERT_EQ(kDone, Open(connection_, "Q", kInputShared, &object_));
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), Get(connection_, object_, kNoSync, 5000).codes);
}

TEST_F(ConnectTest, TheServerEndOfTheChannelHasALimitToo) {
    SetQmgr("channel_max_message_length = 500\n");
    mqi::MQCDStart cd = NewCd(1000);
    ASSERT_EQ(kDone, ConnectClient(Mq(), mqi::MQCNO_CLIENT_BINDING, &cd, &connection_));
    ASSERT_EQ(kDone, Open(connection_, "Q", kInputShared, &object_));
    EXPECT_EQ(FailedWith(mqi::MQRC_DATA_LENGTH_ERROR), Get(connection_, object_, kNoSync, 501).codes);
}

TEST_F(ConnectTest, ChannelAndListenerMustMatchTheAttributes) {
    mqi::MQCDStart cd = NewCd(1000);
    SetQmgr("channel = OTHER.SVRCONN\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_UNKNOWN_CHANNEL_NAME), ConnectClient(MqClient(), 0, &cd, &connection_));
    SetQmgr("listener = elsewhere(1414)\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_HOST_NOT_AVAILABLE), ConnectClient(MqClient(), 0, &cd, &connection_));
    SetQmgr("channel = APP.SVRCONN\nlistener = mq.example.com(1414)\n");
    EXPECT_EQ(kDone, ConnectClient(Mq(), mqi::MQCNO_CLIENT_BINDING, &cd, &connection_));
}

TEST_F(ConnectTest, AnInvalidChannelDefinitionIs2277AndOneGivenTwiceIs2278) {
    mqi::MQCDStart cd = NewCd(1000);
    cd.Version = 14;
    EXPECT_EQ(FailedWith(mqi::MQRC_CD_ERROR), ConnectClient(MqClient(), 0, &cd, &connection_));
    mqi::MQCNO cno = NewCno(2);
    cno.ClientConnPtr = &cd;
    cno.ClientConnOffset = 24;
    EXPECT_EQ(FailedWith(mqi::MQRC_CLIENT_CONN_ERROR), Connx(MqClient(), "QM1", &cno, &connection_));
}

TEST_F(ConnectTest, ALocalBindingThroughTheClientLibraryIs2012) {
    mqi::MQCNO cno = NewCno();
    cno.Options = mqi::MQCNO_LOCAL_BINDING;
    EXPECT_EQ(FailedWith(mqi::MQRC_ENVIRONMENT_ERROR), Connx(MqClient(), "QM1", &cno, &connection_));
}

TEST_F(ConnectTest, MqConnectTypeClientMakesAStandardConnectionAClientConnection) {
    platform::SetEnvironment("MQ_CONNECT_TYPE", "CLIENT");
    SetQmgr("channel_max_message_length = 500\n");
    ConnectAndOpen();
    EXPECT_EQ(FailedWith(mqi::MQRC_DATA_LENGTH_ERROR), Get(connection_, object_, kNoSync, 501).codes);
}

}  // namespace
