// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/sqlite/sqlite_target.h"

#include <sqlite3.h>

#include <cstring>
#include <initializer_list>
#include <utility>

#include "mqam/target/sqlite/sqlite_vfs.h"
#include "platform/file.h"

namespace mqam {

namespace {

constexpr int kBusyMs = 10000;
constexpr char kUnreadableState[] = "the restart information cannot be read";

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
struct EndStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Statement = std::unique_ptr<sqlite3_stmt, EndStatement>;

struct CodeRow {
    int code;
    bool isTransient;
    const char* next;
};

// Returns what to do about the codes that have a remedy of their own.
constexpr CodeRow kCodes[] = {
    {SQLITE_BUSY, true, "another program is using the database: let it finish"},
    {SQLITE_LOCKED, true, "another program is using the database: let it finish"},
    {SQLITE_FULL, true, "free space on its disk"},
    {SQLITE_IOERR, true, "check its disk"},
    {SQLITE_NOMEM, true, "free memory"},
    {SQLITE_CANTOPEN, true, "check that the file and its directory can be read and written"},
    {SQLITE_READONLY, true, "check that the file and its directory can be written"},
    {SQLITE_PERM, true, "check that the file and its directory can be written"},
    {SQLITE_CORRUPT, false, "check its disk, and restore an undamaged copy of the database"},
    {SQLITE_NOTADB, false, "name a SQLite database, or restore an undamaged copy of it"},
};

const CodeRow* FindCode(int code) {
    constexpr int kPrimaryCode = 0xFF;
    for (const CodeRow& row : kCodes) {
        if (row.code == (code & kPrimaryCode)) return &row;
    }
    return nullptr;
}

// Returns SQLite's error message, with the system's error where SQLite omits that. When an open has failed,
// SQLite tries other ways, and the system's last error is then not the reason.
std::string DescribeError(sqlite3* database) {
    std::string error = sqlite3_errmsg(database);
    const int systemCode = sqlite3_system_errno(database);
    if (FindCode(sqlite3_errcode(database)) == FindCode(SQLITE_IOERR) && systemCode != 0) {
        error += std::string(" (") + std::strerror(systemCode) + ")";
    }
    return error;
}

class SqliteTarget : public Target {
  public:
    explicit SqliteTarget(const SqliteTargetSettings& settings)
        : settings_(settings),
          name_("sqlite:" + settings.name.file + "?table=" + settings.name.table),
          key_(LowerCase(settings.name.table)),
          places_(PlacesOfDatabase(settings.name.file + "." + key_)),
          stateName_("row '" + key_ + "' of table mqam_restart in " + settings.name.file) {}

    Status LoadState(std::optional<RestartState>& state) override;
    [[nodiscard]] bool IsOccupied() override;
    Status CheckNew() override;
    Status Begin(RestartState& state) override;
    Status RollBackTo(const RestartState& state) override;
    Status ForgetState() override;
    Status ReadLastRecord(const RestartState& state, std::vector<char>& record) override;
    Status Put(const char* record, std::size_t length) override;
    [[nodiscard]] std::uint64_t Length() const override { return rows_; }
    Status Store(const RestartState& state) override;
    Status StoreEnd(const RestartState& state) override;
    [[nodiscard]] const std::string& Name() const override { return name_; }
    [[nodiscard]] std::string Format() const override { return "sqlite"; }
    [[nodiscard]] const LoadPlaces& Places() const override { return places_; }
    [[nodiscard]] std::vector<LoadFile> Files() const override;
    [[nodiscard]] const std::string& StateName() const override { return stateName_; }

  private:
    // Returns the error of the last call of SQLite. `fact` says what could not be done: "the rows cannot be counted".
    Status Fail(const std::string& fact);
    Status Open();
    Status Run(const std::string& sql, const std::string& fact);
    Status RunAll(std::initializer_list<std::pair<std::string, const char*>> statements);
    Status Prepare(const std::string& sql, Statement& statement, const std::string& fact);
    Status PrepareInsertion();
    [[nodiscard]] bool IsInTransaction() const { return sqlite3_get_autocommit(database_.get()) == 0; }
    Status FetchNumber(const std::string& sql, std::uint64_t& number, const std::string& fact);
    Status FetchLastRow();
    Status FetchState(std::optional<RestartState>& state);
    Status Commit() { return Run("COMMIT", "the records cannot be committed"); }
    Status FindTable(bool& exists);
    Status FindRows(bool& hasRows);
    Status RefuseTriggers();
    Status WriteState(const RestartState& state);
    [[nodiscard]] std::string Table() const { return "\"" + settings_.name.table + "\""; }
    [[nodiscard]] std::string UnreadableTable() const {
        return "table " + settings_.name.table + " cannot be read";
    }

    SqliteTargetSettings settings_;
    std::string name_;
    std::string key_;  // of the row that keeps the state
    LoadPlaces places_;
    std::string stateName_;
    Database database_;
    Statement insertion_;
    std::uint64_t rows_ = 0;  // the id of the last row
};

std::vector<LoadFile> SqliteTarget::Files() const {
    const std::string& file = settings_.name.file;
    static constexpr char kWorkFile[] = "work file of the database";
    std::vector<LoadFile> files = {{file, "target"},
                                   {file + "-journal", kWorkFile},
                                   {file + "-wal", kWorkFile},
                                   {file + "-shm", kWorkFile}};
    for (const LoadFile& lock : LockFilesOf(places_))
        files.push_back(lock);
    return files;
}

Status SqliteTarget::Fail(const std::string& fact) {
    const CodeRow* row = FindCode(database_ ? sqlite3_errcode(database_.get()) : SQLITE_NOMEM);
    const std::string error = settings_.name.file + ": " + fact + ": " +
                              (database_ ? DescribeError(database_.get()) : "out of memory") +
                              (row != nullptr ? std::string("; ") + row->next : "");
    return row != nullptr && row->isTransient ? Status::Transient(error) : Status::Refused(error);
}

Status SqliteTarget::Open() {
    if (database_) return {};
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(settings_.name.file.c_str(), &opened,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, RegisterSqliteVfs());
    database_.reset(opened);
    if (code != SQLITE_OK) {
        Status failed = Fail("it cannot be opened");
        database_.reset();
        return failed;
    }
    sqlite3_busy_timeout(database_.get(), kBusyMs);
    // The module carries a checkpoint out after the commit that stores it. So the commit must survive a loss of power,
    // and so must the deletion of its journal.
    Status status = Run("PRAGMA synchronous = EXTRA", "it cannot be opened");
    if (!status.IsOk()) database_.reset();
    return status;
}

Status SqliteTarget::Run(const std::string& sql, const std::string& fact) {
    const int code = sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr);
    return code == SQLITE_OK ? Status() : Fail(fact);
}

// Runs statements, each with the fact to report if it fails, up to the first that fails.
Status SqliteTarget::RunAll(std::initializer_list<std::pair<std::string, const char*>> statements) {
    Status status;
    for (const auto& [sql, fact] : statements) {
        status = Run(sql, fact);
        if (!status.IsOk()) break;
    }
    return status;
}

Status SqliteTarget::Prepare(const std::string& sql, Statement& statement, const std::string& fact) {
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &prepared, nullptr);
    statement.reset(prepared);
    return code == SQLITE_OK ? Status() : Fail(fact);
}

Status SqliteTarget::FetchNumber(const std::string& sql, std::uint64_t& number, const std::string& fact) {
    Statement statement;
    Status status = Prepare(sql, statement, fact);
    if (!status.IsOk()) return status;
    if (sqlite3_step(statement.get()) != SQLITE_ROW) return Fail(fact);
    number = static_cast<std::uint64_t>(sqlite3_column_int64(statement.get(), 0));
    return {};
}

Status SqliteTarget::FetchLastRow() {
    return FetchNumber("SELECT ifnull(max(id), 0) FROM " + Table(), rows_, UnreadableTable());
}

Status SqliteTarget::PrepareInsertion() {
    Status status = Prepare("INSERT OR ABORT INTO " + Table() + " (id, record) VALUES (?, ?)", insertion_,
                            "records cannot be put into table " + settings_.name.table);
    if (status.IsOk() || sqlite3_errcode(database_.get()) != SQLITE_ERROR) return status;
    return Status::Refused(status.Error() + "; the columns id and record are needed: name another table");
}

Status SqliteTarget::LoadState(std::optional<RestartState>& state) {
    state.reset();
    if (platform::ProbePath(settings_.name.file) == platform::PathKind::kMissing) return {};
    std::uint64_t tables = 0;
    Status status = Open();
    if (status.IsOk()) {
        status = FetchNumber("SELECT count(*) FROM sqlite_master WHERE name = 'mqam_restart'", tables,
                             kUnreadableState);
    }
    if (!status.IsOk() || tables == 0) return status;
    return FetchState(state);
}

Status SqliteTarget::FetchState(std::optional<RestartState>& state) {
    Statement statement;
    Status prepared =
        Prepare("SELECT state FROM mqam_restart WHERE target = '" + key_ + "'", statement, kUnreadableState);
    if (!prepared.IsOk()) return prepared;
    const int code = sqlite3_step(statement.get());
    if (code == SQLITE_DONE) return {};
    if (code != SQLITE_ROW) return Fail(kUnreadableState);
    const auto* const text = static_cast<const char*>(sqlite3_column_blob(statement.get(), 0));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 0));
    RestartState parsed;
    const Status status = ParseRestartState(std::string(text != nullptr ? text : "", length), parsed);
    if (!status.IsOk()) {
        return Status::Refused(stateName_ + " " + status.Error() +
                               "; restore an undamaged copy of the database");
    }
    state = parsed;
    return {};
}

bool SqliteTarget::IsOccupied() {
    if (settings_.append || platform::ProbePath(settings_.name.file) == platform::PathKind::kMissing)
        return false;
    bool hasRows = false;
    // A table that cannot be read counts as occupied.
    return !FindRows(hasRows).IsOk() || hasRows;
}

Status SqliteTarget::FindTable(bool& exists) {
    std::uint64_t found = 0;
    Status status = Open();
    if (status.IsOk()) {
        status = FetchNumber("SELECT count(*) FROM sqlite_master WHERE name = '" + key_ + "' COLLATE NOCASE",
                             found, UnreadableTable());
    }
    exists = status.IsOk() && found != 0;
    return status;
}

Status SqliteTarget::FindRows(bool& hasRows) {
    std::uint64_t found = 0;
    bool exists = false;
    hasRows = false;
    Status status = FindTable(exists);
    if (!exists) return status;
    status = FetchNumber("SELECT EXISTS (SELECT 1 FROM " + Table() + ")", found, UnreadableTable());
    hasRows = status.IsOk() && found != 0;
    return status;
}

// A trigger could drop or change a row that is inserted, and the insertion would succeed all the same. What a trigger
// does is known only as text, so each one that mentions an insertion is refused.
Status SqliteTarget::RefuseTriggers() {
    std::uint64_t found = 0;
    Status status = FetchNumber("SELECT count(*) FROM sqlite_master WHERE type = 'trigger' AND tbl_name = '" +
                                    key_ + "' COLLATE NOCASE AND sql LIKE '%insert%'",
                                found, UnreadableTable());
    if (!status.IsOk() || found == 0) return status;
    return Status::Refused(
        "table " + settings_.name.table + " of " + settings_.name.file +
        " has a trigger that may act on an insertion, so records could be lost in it: drop the "
        "trigger, or name another table");
}

Status SqliteTarget::CheckNew() {
    // A new load creates the database only when it begins.
    if (platform::ProbePath(settings_.name.file) == platform::PathKind::kMissing) return {};
    bool exists = false;
    bool hasRows = false;
    Status status = FindTable(exists);
    if (!exists) return status;
    if (!settings_.append && !settings_.force) status = FindRows(hasRows);
    if (!status.IsOk()) return status;
    if (hasRows) {
        return Status::Refused("table " + settings_.name.table + " of " + settings_.name.file +
                               " has rows; give --force to replace them, or --append to add to them");
    }
    status = PrepareInsertion();
    insertion_.reset();
    return status.IsOk() ? RefuseTriggers() : status;
}

Status SqliteTarget::Begin(RestartState& state) {
    Status status = CheckNew();
    if (status.IsOk()) status = Open();
    if (!status.IsOk()) return status;
    constexpr const char* kCannotCreate = "a table cannot be created";
    status =
        RunAll({{"BEGIN IMMEDIATE", "it cannot be written"},
                {"CREATE TABLE IF NOT EXISTS mqam_restart (target TEXT PRIMARY KEY, state TEXT NOT NULL)",
                 kCannotCreate},
                {"CREATE TABLE IF NOT EXISTS " + Table() + " (id INTEGER PRIMARY KEY, record BLOB NOT NULL)",
                 kCannotCreate}});
    // This finds a table of another shape before anything is stored.
    if (status.IsOk()) status = PrepareInsertion();
    if (status.IsOk() && settings_.force)
        status = Run("DELETE FROM " + Table(), "the rows cannot be deleted");
    if (status.IsOk()) status = FetchLastRow();
    if (!status.IsOk()) return status;
    state.targetLength = rows_;
    status = WriteState(state);
    return status.IsOk() ? Commit() : status;
}

Status SqliteTarget::ForgetState() {
    Status opened = Open();
    if (!opened.IsOk()) return opened;
    const std::string fact = "the restart information cannot be deleted";
    Statement statement;
    Status prepared = Prepare("DELETE FROM mqam_restart WHERE target = ?", statement, fact);
    if (!prepared.IsOk()) return prepared;
    const bool isDeleted =
        sqlite3_bind_text(statement.get(), 1, key_.c_str(), -1, SQLITE_STATIC) == SQLITE_OK &&
        sqlite3_step(statement.get()) == SQLITE_DONE;
    return isDeleted ? Status() : Fail(fact);
}

Status SqliteTarget::ReadLastRecord(const RestartState& state, std::vector<char>& record) {
    Status opened = Open();
    if (!opened.IsOk()) return opened;
    Statement statement;
    Status prepared =
        Prepare("SELECT record FROM " + Table() + " WHERE id = " + std::to_string(state.targetLength),
                statement, UnreadableTable());
    if (!prepared.IsOk()) return prepared;
    const int code = sqlite3_step(statement.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) return Fail(UnreadableTable());
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement.get(), 0));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 0));
    record.assign(bytes, bytes + length);
    if (length == state.lastRecordLength && DigestOf(record.data(), length) == state.lastRecordDigest)
        return {};
    return Status::Refused("the last row of table " + settings_.name.table + " in " + settings_.name.file +
                           " is not the last record loaded: something else has changed the table; undo that "
                           "and run the same command again");
}

Status SqliteTarget::RollBackTo(const RestartState& state) {
    Status status = Open();
    if (status.IsOk()) status = FetchLastRow();
    if (!status.IsOk()) return status;
    if (rows_ != state.targetLength) {
        return Status::Refused("the last row of table " + settings_.name.table + " in " +
                               settings_.name.file + " is " + std::to_string(rows_) +
                               ", but the load had stored " + std::to_string(state.targetLength) +
                               ": something else has changed the table; undo that and run the same command "
                               "again");
    }
    std::vector<char> last;
    if (state.lastRecordLength != 0) status = ReadLastRecord(state, last);
    if (status.IsOk()) status = RefuseTriggers();
    return status.IsOk() ? PrepareInsertion() : status;
}

Status SqliteTarget::Put(const char* record, std::size_t length) {
    // A transaction begins only when there is something to write, so that a waiting load locks no one else out.
    if (!IsInTransaction()) {
        Status begun = Run("BEGIN IMMEDIATE", "it cannot be written");
        if (!begun.IsOk()) return begun;
    }
    sqlite3_stmt* const insertion = insertion_.get();
    const bool isBound =
        sqlite3_bind_int64(insertion, 1, static_cast<sqlite3_int64>(rows_ + 1)) == SQLITE_OK &&
        sqlite3_bind_blob64(insertion, 2, record, length, SQLITE_STATIC) == SQLITE_OK;
    const sqlite3_int64 changesBefore = sqlite3_total_changes64(database_.get());
    const bool isInserted = isBound && sqlite3_step(insertion) == SQLITE_DONE;
    if (!isBound || sqlite3_reset(insertion) != SQLITE_OK || !isInserted)
        return Fail("a row cannot be inserted");
    if (sqlite3_total_changes64(database_.get()) - changesBefore != 1) {
        return Status::Refused(
            settings_.name.file + ": an insertion into table " + settings_.name.table +
            " did not add exactly one row: something in the table drops or changes rows; name "
            "another table");
    }
    ++rows_;
    return {};
}

Status SqliteTarget::WriteState(const RestartState& state) {
    const std::string fact = "the restart information cannot be written";
    const std::string text = FormatRestartState(state);
    Statement statement;
    Status status = Prepare(
        "INSERT INTO mqam_restart (target, state) VALUES (?, ?) ON CONFLICT (target) DO UPDATE SET state = "
        "excluded.state",
        statement, fact);
    if (!status.IsOk()) return status;
    const bool isWritten =
        sqlite3_bind_text(statement.get(), 1, key_.c_str(), -1, SQLITE_STATIC) == SQLITE_OK &&
        sqlite3_bind_text(statement.get(), 2, text.data(), static_cast<int>(text.size()), SQLITE_STATIC) ==
            SQLITE_OK &&
        sqlite3_step(statement.get()) == SQLITE_DONE;
    return isWritten ? Status() : Fail(fact);
}

Status SqliteTarget::Store(const RestartState& state) {
    Status status = WriteState(state);
    return status.IsOk() && IsInTransaction() ? Commit() : status;
}

Status SqliteTarget::StoreEnd(const RestartState& state) {
    Status status = Open();
    if (status.IsOk() && IsInTransaction()) {
        status = Run("ROLLBACK", "the records since the last checkpoint cannot be removed");
    }
    return status.IsOk() ? WriteState(state) : status;
}

}  // namespace

Status MakeSqliteTarget(const SqliteTargetSettings& settings, std::unique_ptr<Target>& target) {
    target = std::make_unique<SqliteTarget>(settings);
    return {};
}

}  // namespace mqam
