#include "mqam/target/sqlite/sqlite_target.h"

#include <sqlite3.h>

#include <cstring>

#include "mqam/target/sqlite/sqlite_vfs.h"
#include "platform/file.h"

namespace mqam {

namespace {

constexpr int kBusyMilliseconds = 10000;

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
    bool mayPass;
    const char* next;
};

// What the codes that have a remedy of their own ask for.
constexpr CodeRow kCodes[] = {
    {SQLITE_BUSY, true, "another program uses the database: let it end what it does"},
    {SQLITE_LOCKED, true, "another program uses the database: let it end what it does"},
    {SQLITE_FULL, true, "make room on its disk"},
    {SQLITE_IOERR, true, "check its disk"},
    {SQLITE_NOMEM, true, "free memory"},
    {SQLITE_CANTOPEN, true, "check that the file and its folder can be read and written"},
    {SQLITE_READONLY, true, "check that the file and its folder can be written"},
    {SQLITE_PERM, true, "check that the file and its folder can be written"},
    {SQLITE_CORRUPT, false, "check its disk, and give back an undamaged copy of the database"},
    {SQLITE_NOTADB, false, "name a SQLite database, or give back an undamaged copy of it"},
};

const CodeRow* FindCode(int code) {
    constexpr int kPrimaryCode = 0xFF;
    for (const CodeRow& row : kCodes) {
        if (row.code == (code & kPrimaryCode)) return &row;
    }
    return nullptr;
}

// The words of SQLite, and the system's where SQLite keeps them to itself. After an open that failed SQLite
// tries others: the system's last word is not the reason then.
std::string DescribeError(sqlite3* database) {
    std::string words = sqlite3_errmsg(database);
    const int systemCode = sqlite3_system_errno(database);
    if (FindCode(sqlite3_errcode(database)) == FindCode(SQLITE_IOERR) && systemCode != 0) {
        words += std::string(" (") + std::strerror(systemCode) + ")";
    }
    return words;
}

class SqliteTarget : public Target {
  public:
    explicit SqliteTarget(const SqliteTargetSettings& settings)
        : settings_(settings),
          name_("sqlite:" + settings.name.file + "?table=" + settings.name.table),
          key_(LowerCase(settings.name.table)),
          stateName_("row '" + key_ + "' of table mqam_restart in " + settings.name.file) {}

    [[nodiscard]] bool LoadState(std::optional<RestartState>& state) override;
    [[nodiscard]] bool IsOccupied() override;
    [[nodiscard]] bool Begin(RestartState& state) override;
    [[nodiscard]] bool RollBackTo(const RestartState& state) override;
    [[nodiscard]] bool Put(const char* record, std::size_t length) override;
    [[nodiscard]] std::uint64_t Length() const override { return rows_; }
    [[nodiscard]] bool Store(const RestartState& state) override;
    [[nodiscard]] bool StoreEnd(const RestartState& state) override;
    [[nodiscard]] const std::string& Name() const override { return name_; }
    [[nodiscard]] std::string Format() const override { return "sqlite"; }
    [[nodiscard]] std::string CommandLock() const override {
        return settings_.name.file + "." + key_ + ".lock";
    }
    [[nodiscard]] std::string AttemptLock() const override {
        return settings_.name.file + "." + key_ + ".life.lock";
    }
    [[nodiscard]] std::vector<LoadFile> Files() const override;
    [[nodiscard]] const std::string& StateName() const override { return stateName_; }

  private:
    // `action` says what cannot be done: "the rows cannot be counted".
    [[nodiscard]] bool FailTo(const std::string& action);
    [[nodiscard]] bool Open();
    [[nodiscard]] bool Run(const std::string& sql, const std::string& action);
    [[nodiscard]] bool Prepare(const std::string& sql, Statement& statement, const std::string& action);
    [[nodiscard]] bool PrepareInsertion();
    [[nodiscard]] bool IsInTransaction() const { return sqlite3_get_autocommit(database_.get()) == 0; }
    [[nodiscard]] bool FetchNumber(const std::string& sql, std::uint64_t& number, const std::string& action);
    [[nodiscard]] bool FetchLastRow();
    [[nodiscard]] bool Commit() { return Run("COMMIT", "the records cannot be committed"); }
    [[nodiscard]] bool LookForRows(bool& hasRows);
    [[nodiscard]] bool WriteState(const RestartState& state);
    [[nodiscard]] bool EndsWithLastRecord(const RestartState& state);
    [[nodiscard]] std::string Table() const { return "\"" + settings_.name.table + "\""; }

    SqliteTargetSettings settings_;
    std::string name_;
    std::string key_;  // of the row that keeps the state
    std::string stateName_;
    Database database_;
    Statement insertion_;
    std::uint64_t rows_ = 0;  // the id of the last one
};

std::vector<LoadFile> SqliteTarget::Files() const {
    const std::string& file = settings_.name.file;
    static constexpr char kWorkFile[] = "work file of the database";
    return {{file, "target"},           {file + "-journal", kWorkFile}, {file + "-wal", kWorkFile},
            {file + "-shm", kWorkFile}, {CommandLock(), kWorkFile},     {AttemptLock(), kWorkFile}};
}

bool SqliteTarget::FailTo(const std::string& action) {
    const CodeRow* row = FindCode(database_ ? sqlite3_errcode(database_.get()) : SQLITE_NOMEM);
    const std::string words = settings_.name.file + ": " + action + ": " +
                              (database_ ? DescribeError(database_.get()) : "out of memory") +
                              (row != nullptr ? std::string("; ") + row->next : "");
    return row != nullptr && row->mayPass ? Fail(words) : Refuse(words);
}

bool SqliteTarget::Open() {
    if (database_) return true;
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(settings_.name.file.c_str(), &opened,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, RegisterSqliteVfs());
    database_.reset(opened);
    if (code != SQLITE_OK) {
        static_cast<void>(FailTo("it cannot be opened"));
        database_.reset();
        return false;
    }
    sqlite3_busy_timeout(database_.get(), kBusyMilliseconds);
    // A checkpoint is carried out after the commit that stores it: the commit must outlast a loss of power,
    // the deletion of its journal, too.
    if (Run("PRAGMA synchronous = EXTRA", "it cannot be opened")) return true;
    database_.reset();
    return false;
}

bool SqliteTarget::Run(const std::string& sql, const std::string& action) {
    return sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK ||
           FailTo(action);
}

bool SqliteTarget::Prepare(const std::string& sql, Statement& statement, const std::string& action) {
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &prepared, nullptr);
    statement.reset(prepared);
    return code == SQLITE_OK || FailTo(action);
}

bool SqliteTarget::FetchNumber(const std::string& sql, std::uint64_t& number, const std::string& action) {
    Statement statement;
    if (!Prepare(sql, statement, action)) return false;
    if (sqlite3_step(statement.get()) != SQLITE_ROW) return FailTo(action);
    number = static_cast<std::uint64_t>(sqlite3_column_int64(statement.get(), 0));
    return true;
}

bool SqliteTarget::FetchLastRow() {
    return FetchNumber("SELECT ifnull(max(id), 0) FROM " + Table(), rows_,
                       "table " + settings_.name.table + " cannot be read");
}

bool SqliteTarget::PrepareInsertion() {
    const std::string action = "records cannot be put into table " + settings_.name.table;
    if (Prepare("INSERT INTO " + Table() + " (id, record) VALUES (?, ?)", insertion_, action)) return true;
    return sqlite3_errcode(database_.get()) == SQLITE_ERROR &&
           Refuse(Failure() + "; the columns id and record are needed: name another table");
}

bool SqliteTarget::LoadState(std::optional<RestartState>& state) {
    state.reset();
    if (platform::ProbePath(settings_.name.file) == platform::PathKind::kMissing) return true;
    std::uint64_t tables = 0;
    const std::string action = "the restart information cannot be read";
    if (!Open() ||
        !FetchNumber("SELECT count(*) FROM sqlite_master WHERE name = 'mqam_restart'", tables, action)) {
        return false;
    }
    if (tables == 0) return true;
    Statement statement;
    if (!Prepare("SELECT state FROM mqam_restart WHERE target = '" + key_ + "'", statement, action)) {
        return false;
    }
    const int code = sqlite3_step(statement.get());
    if (code == SQLITE_DONE) return true;
    if (code != SQLITE_ROW) return FailTo(action);
    const auto* const text = static_cast<const char*>(sqlite3_column_blob(statement.get(), 0));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 0));
    RestartState parsed;
    std::string words;
    if (!ParseRestartState(std::string(text != nullptr ? text : "", length), parsed, words)) {
        return Refuse(stateName_ + " " + words + "; give back an undamaged copy of the database");
    }
    state = parsed;
    return true;
}

bool SqliteTarget::IsOccupied() {
    if (settings_.append || platform::ProbePath(settings_.name.file) == platform::PathKind::kMissing)
        return false;
    bool hasRows = false;
    // What cannot be looked into is not free either.
    return !LookForRows(hasRows) || hasRows;
}

bool SqliteTarget::LookForRows(bool& hasRows) {
    const std::string action = "table " + settings_.name.table + " cannot be read";
    std::uint64_t found = 0;
    hasRows = false;
    if (!Open() ||
        !FetchNumber("SELECT count(*) FROM sqlite_master WHERE name = '" + key_ + "' COLLATE NOCASE", found,
                     action)) {
        return false;
    }
    if (found == 0) return true;
    if (!FetchNumber("SELECT EXISTS (SELECT 1 FROM " + Table() + ")", found, action)) return false;
    hasRows = found != 0;
    return true;
}

bool SqliteTarget::Begin(RestartState& state) {
    if (!Open()) return false;
    bool hasRows = false;
    if (!settings_.append && !settings_.force && !LookForRows(hasRows)) return false;
    if (hasRows) {
        return Refuse("table " + settings_.name.table + " of " + settings_.name.file +
                      " has rows; give --force to replace them, or --append to add to them");
    }
    const std::string make = "a table cannot be made";
    if (!Run("BEGIN IMMEDIATE", "it cannot be written") ||
        !Run("CREATE TABLE IF NOT EXISTS mqam_restart (target TEXT PRIMARY KEY, state TEXT NOT NULL)",
             make) ||
        !Run("CREATE TABLE IF NOT EXISTS " + Table() + " (id INTEGER PRIMARY KEY, record BLOB NOT NULL)",
             make) ||
        // A table of another shape is found before anything is stored.
        !PrepareInsertion() ||
        (settings_.force && !Run("DELETE FROM " + Table(), "the rows cannot be deleted")) ||
        !FetchLastRow()) {
        return false;
    }
    state.targetLength = rows_;
    return WriteState(state) && Commit();
}

bool SqliteTarget::EndsWithLastRecord(const RestartState& state) {
    if (state.lastRecordLength == 0) return true;
    const std::string action = "table " + settings_.name.table + " cannot be read";
    Statement statement;
    if (!Prepare("SELECT record FROM " + Table() + " WHERE id = " + std::to_string(rows_), statement,
                 action)) {
        return false;
    }
    const int code = sqlite3_step(statement.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) return FailTo(action);
    const auto* const record = static_cast<const char*>(sqlite3_column_blob(statement.get(), 0));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 0));
    if (length == state.lastRecordLength && DigestOf(record, length) == state.lastRecordDigest) return true;
    return Refuse("the last row of table " + settings_.name.table + " in " + settings_.name.file +
                  " is not the last record loaded: something else has changed the table; undo that and run "
                  "the same command again");
}

bool SqliteTarget::RollBackTo(const RestartState& state) {
    if (!Open() || !FetchLastRow()) return false;
    if (rows_ != state.targetLength) {
        return Refuse("the last row of table " + settings_.name.table + " in " + settings_.name.file +
                      " is " + std::to_string(rows_) + ", but the load had stored " +
                      std::to_string(state.targetLength) +
                      ": something else has changed the table; undo that and run the same command again");
    }
    return EndsWithLastRecord(state) && PrepareInsertion();
}

bool SqliteTarget::Put(const char* record, std::size_t length) {
    // Not before there is something to write, so that a load that waits keeps nobody else out.
    if (!IsInTransaction() && !Run("BEGIN IMMEDIATE", "it cannot be written")) return false;
    sqlite3_stmt* const insertion = insertion_.get();
    sqlite3_bind_int64(insertion, 1, static_cast<sqlite3_int64>(rows_ + 1));
    sqlite3_bind_blob64(insertion, 2, record, length, SQLITE_STATIC);
    const bool inserted = sqlite3_step(insertion) == SQLITE_DONE;
    if (sqlite3_reset(insertion) != SQLITE_OK || !inserted) return FailTo("a row cannot be inserted");
    ++rows_;
    return true;
}

bool SqliteTarget::WriteState(const RestartState& state) {
    const std::string action = "the restart information cannot be written";
    const std::string text = FormatRestartState(state);
    Statement statement;
    if (!Prepare(
            "INSERT INTO mqam_restart (target, state) VALUES (?, ?) ON CONFLICT (target) DO UPDATE SET state "
            "= excluded.state",
            statement, action)) {
        return false;
    }
    sqlite3_bind_text(statement.get(), 1, key_.c_str(), -1, SQLITE_STATIC);
    sqlite3_bind_text(statement.get(), 2, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    return sqlite3_step(statement.get()) == SQLITE_DONE || FailTo(action);
}

bool SqliteTarget::Store(const RestartState& state) {
    return WriteState(state) && (!IsInTransaction() || Commit());
}

bool SqliteTarget::StoreEnd(const RestartState& state) {
    if (!Open()) return false;
    if (IsInTransaction() && !Run("ROLLBACK", "the records since the last checkpoint cannot be taken back")) {
        return false;
    }
    return WriteState(state);
}

}  // namespace

std::unique_ptr<Target> MakeSqliteTarget(const SqliteTargetSettings& settings, std::string& /*complaint*/) {
    return std::make_unique<SqliteTarget>(settings);
}

}  // namespace mqam
