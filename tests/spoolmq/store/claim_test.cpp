// SPDX-License-Identifier: Apache-2.0

// Tests claims that cannot be undone.
#include <gtest/gtest.h>

#include <filesystem>

#include "spoolmq/store/admin.h"
#include "tests/support/files.h"

namespace spoolmq {
namespace {

namespace fs = std::filesystem;

class ClaimTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(CreateQueueManager("spool", "QM1", {}).IsOk());
        ASSERT_TRUE(CreateQueue("spool", "QM1", "Q", {}).IsOk());
        ASSERT_TRUE(ConnectStore("spool", "QM1", connection_).IsOk());
        ASSERT_TRUE(OpenStoreQueue(*connection_, "Q", InputUse::kShared, queue_).IsOk());
        ASSERT_TRUE(PutMessage(*queue_, {nullptr, "m", 1}, Syncpoint::kNo).IsOk());
    }
    void TearDown() override {
        CloseStoreQueue(std::move(queue_));
        DisconnectStore(std::move(connection_));
    }

    // Claims the message under syncpoint, and tries to undo the claim while the queue's directory has another
    // name.
    void FailToUndoAClaim() {
        FoundMessage found;
        ASSERT_TRUE(FindMessage(*queue_, {}, {}, found).IsOk());
        ASSERT_TRUE(ClaimMessage(*queue_, found, Syncpoint::kYes).IsOk());
        fs::rename("spool/QM1/Q", "spool/QM1/moved");
        UndoClaim(*queue_, found, Syncpoint::kYes);
        fs::rename("spool/QM1/moved", "spool/QM1/Q");
    }

    TemporaryDirectory directory_;
    std::unique_ptr<StoreConnection> connection_;
    std::unique_ptr<StoreQueue> queue_;
};

#ifndef _WIN32  // Windows does not rename a directory in which a file is open.
TEST_F(ClaimTest, AClaimThatCannotBeUndoneIsNotCommitted) {
    FailToUndoAClaim();
    EXPECT_TRUE(connection_->unit.isRollbackOnly);
    EXPECT_EQ(StatusCode::kFailed, CommitStore(*connection_).code);
    EXPECT_EQ(1, QueueDepth("spool/QM1", "Q"));
}

TEST_F(ClaimTest, AClaimThatCannotBeUndoneIsBackedOut) {
    FailToUndoAClaim();
    EXPECT_TRUE(BackOutStore(*connection_).IsOk());
    FoundMessage found;
    ASSERT_TRUE(FindMessage(*queue_, {}, {}, found).IsOk());
    EXPECT_EQ(1, found.bytes);
    EXPECT_EQ(1, found.descriptor.BackoutCount);
    ReleaseFound(found);
    EXPECT_FALSE(connection_->unit.isRollbackOnly);
    EXPECT_TRUE(CommitStore(*connection_).IsOk());
}
#endif

}  // namespace
}  // namespace spoolmq
