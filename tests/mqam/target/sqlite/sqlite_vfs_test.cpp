// A database that the disk cannot read, at each of the reads in turn.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

#include "mqam/target/sqlite/sqlite_target.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

int readsUntilFailure;  // 0: none fails

ssize_t ReadOrFail(int descriptor, void* bytes, size_t count, off_t offset) {
    if (readsUntilFailure > 0 && --readsUntilFailure == 0) {
        errno = EIO;
        return -1;
    }
    return pread(descriptor, bytes, count, offset);
}

// Which of the two SQLite calls is a matter of how it was built.
void ReplaceReads(sqlite3_syscall_ptr replacement) {
    sqlite3_vfs* const files = sqlite3_vfs_find(nullptr);
    for (const char* name : {"pread", "pread64"})
        files->xSetSystemCall(files, name, replacement);
}

// As somebody leaves it who dies before a change is brought to the medium: every transaction looks into it.
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
        std::string complaint;
        return MakeSqliteTarget({{path_, "orders"}, false, true}, complaint);
    }

    void StoreOneRecord() const {
        const std::unique_ptr<Target> target = MakeTarget();
        RestartState state;
        state.begun = "2026-01-01T00:00:00Z";
        ASSERT_TRUE(target->Begin(state)) << target->Failure();
        ASSERT_TRUE(target->RollBackTo(state)) << target->Failure();
        ASSERT_TRUE(target->Put("record", 6)) << target->Failure();
        state.targetLength = target->Length();
        ASSERT_TRUE(target->Store(state)) << target->Failure();
    }

    // A life as far as its first record; returns whether nothing failed.
    static bool BeginLife(Target& target) {
        std::optional<RestartState> state;
        if (!target.LoadState(state) || !state || !target.RollBackTo(*state) || !target.Put("record", 6)) {
            return false;
        }
        state->targetLength = target.Length();
        return target.Store(*state);
    }

    // Fails each read of a life in turn, until the life has no more. Returns how many there are.
    [[nodiscard]] int FailEachRead(bool hasJournal) const {
        for (int failures = 0;; ++failures) {
            if (hasJournal) LeaveUnusedJournal(path_);
            const std::unique_ptr<Target> target = MakeTarget();
            readsUntilFailure = failures + 1;
            const bool began = BeginLife(*target);
            const bool failed = readsUntilFailure == 0;
            readsUntilFailure = 0;
            if (!failed || failures > 100) {
                EXPECT_TRUE(began) << target->Failure();
                return failures;
            }
            // SQLite does without some.
            if (began) continue;
            EXPECT_FALSE(target->Refuses()) << failures;
            for (const char* words : {"disk I/O error", "; check its disk"}) {
                EXPECT_NE(target->Failure().find(words), std::string::npos)
                    << failures << ": " << target->Failure();
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
