// SPDX-License-Identifier: Apache-2.0

// Tests a database that the disk cannot read, by a failure of each read in turn.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

#include "mqam/target/sqlite/sqlite_target.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

int readsUntilFailure;  // 0: no read fails

ssize_t ReadOrFail(int descriptor, void* bytes, size_t count, off_t offset) {
    if (readsUntilFailure > 0 && --readsUntilFailure == 0) {
        errno = EIO;
        return -1;
    }
    return pread(descriptor, bytes, count, offset);
}

// SQLite calls one or the other, depending on how it was built.
void ReplaceReads(sqlite3_syscall_ptr replacement) {
    sqlite3_vfs* const files = sqlite3_vfs_find(nullptr);
    for (const char* name : {"pread", "pread64"})
        files->xSetSystemCall(files, name, replacement);
}

// Leaves a journal as a program does that dies before it syncs a change. Every transaction reads it.
void LeaveUnusedJournal(const std::string& path) {
    std::ofstream(path + "-journal", std::ios::binary) << std::string(512, '\0');
}

class SqliteReads : public testing::Test {
  protected:
    void SetUp() override { ReplaceReads(reinterpret_cast<sqlite3_syscall_ptr>(ReadOrFail)); }
    void TearDown() override {
        readsUntilFailure = 0;
        ReplaceReads(nullptr);
    }

    [[nodiscard]] std::unique_ptr<Target> MakeTarget() const {
        std::unique_ptr<Target> target;
        EXPECT_EQ(MakeSqliteTarget({{path_, "orders"}, false, true}, target).Error(), "");
        return target;
    }

    void StoreOneRecord() const {
        const std::unique_ptr<Target> target = MakeTarget();
        RestartState state;
        state.begun = "2026-01-01T00:00:00Z";
        ASSERT_EQ(target->Begin(state).Error(), "");
        ASSERT_EQ(target->RollBackTo(state).Error(), "");
        ASSERT_EQ(target->Put("record", 6).Error(), "");
        state.targetLength = target->Length();
        ASSERT_EQ(target->Store(state).Error(), "");
    }

    // Makes the calls of an attempt up to its first checkpoint.
    static Status BeginAttempt(Target& target) {
        std::optional<RestartState> state;
        Status status = target.LoadState(state);
        if (status.IsOk() && !state) status = Status::Permanent("no state is stored");
        if (status.IsOk()) status = target.RollBackTo(*state);
        if (status.IsOk()) status = target.Put("record", 6);
        if (!status.IsOk()) return status;
        state->targetLength = target.Length();
        return target.Store(*state);
    }

    // Lets each read of an attempt fail in turn, until the attempt makes no more reads. Returns how many there are.
    [[nodiscard]] int FailEachRead(bool hasJournal) const {
        for (int failures = 0;; ++failures) {
            if (hasJournal) LeaveUnusedJournal(path_);
            const std::unique_ptr<Target> target = MakeTarget();
            readsUntilFailure = failures + 1;
            const Status begun = BeginAttempt(*target);
            const bool failed = readsUntilFailure == 0;
            readsUntilFailure = 0;
            if (!failed || failures > 100) {
                EXPECT_EQ(begun.Error(), "");
                return failures;
            }
            // SQLite does not need all of its reads.
            if (begun.IsOk()) continue;
            EXPECT_EQ(begun.Code(), StatusCode::kTransient) << failures;
            for (const char* part : {"disk I/O error", "; check its disk"}) {
                EXPECT_NE(begun.Error().find(part), std::string::npos) << failures << ": " << begun.Error();
            }
        }
    }

    TestDirectory folder_;
    std::string path_ = folder_.Path("db");
};

TEST_F(SqliteReads, OneThatFailsIsAFailureOfTheDiskAndNoDamage) {
    StoreOneRecord();
    EXPECT_GE(FailEachRead(false), 4);
}

TEST_F(SqliteReads, TheSameOfAJournalThatIsLookedInto) {
    StoreOneRecord();
    const int ofDatabase = FailEachRead(false);
    EXPECT_GE(FailEachRead(true), ofDatabase + 3);
}

}  // namespace
