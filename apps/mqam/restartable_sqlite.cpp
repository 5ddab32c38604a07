#include "apps/mqam/restartable_sqlite.h"

#include <sqlite3.h>

#include "apps/mqam/platform.h"

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

class SqliteTarget : public RestartableTarget {
  public:
    explicit SqliteTarget(const SqliteTargetSettings& settings)
        : settings_(settings),
          name_("sqlite:" + settings.name.file + "?table=" + settings.name.table),
          key_(LowerCase(settings.name.table)),
          stateName_("row '" + key_ + "' of table mqam_restart in " + settings.name.file) {}

    [[nodiscard]] bool LoadState(std::optional<RestartState>& state) override;
    [[nodiscard]] bool IsOccupied() override;
    [[nodiscard]] bool Begin(RestartState& state) override;
    [[nodiscard]] bool CutBack(const RestartState& state) override;
    [[nodiscard]] bool Put(const char* record, std::size_t length) override;
    [[nodiscard]] std::uint64_t Length() const override { return rows_; }
    [[nodiscard]] bool Store(const RestartState& state) override;
    [[nodiscard]] bool StoreEnd(const RestartState& state) override;
    [[nodiscard]] const std::string& Name() const override { return name_; }
    [[nodiscard]] std::string Format() const override { return "sqlite"; }
    [[nodiscard]] std::string CommandLock() const override {
        return settings_.name.file + "." + key_ + ".lock";
    }
    [[nodiscard]] std::string LifeLock() const override {
        return settings_.name.file + "." + key_ + ".life.lock";
    }
    [[nodiscard]] std::vector<NamedFile> Files() const override;
    [[nodiscard]] const std::string& StateName() const override { return stateName_; }

  private:
    [[nodiscard]] bool FailTo(const std::string& action);
    [[nodiscard]] bool Open();
    [[nodiscard]] bool Run(const std::string& sql);
    [[nodiscard]] bool Prepare(const std::string& sql, Statement& statement);
    [[nodiscard]] bool PrepareInsertion();
    [[nodiscard]] bool IsInTransaction() const { return sqlite3_get_autocommit(database_.get()) == 0; }
    [[nodiscard]] bool FetchNumber(const std::string& sql, std::uint64_t& number);
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

// Whether time may heal an error: the disk, or somebody who has the database locked.
bool MayHeal(int code) {
    constexpr int kPrimaryCode = 0xFF;
    switch (code & kPrimaryCode) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_NOMEM:
        case SQLITE_IOERR:
        case SQLITE_FULL: return true;
        default: return false;
    }
}

std::vector<NamedFile> SqliteTarget::Files() const {
    const std::string& file = settings_.name.file;
    static constexpr char kWorkFile[] = "work file of the database";
    return {{file, "target"},           {file + "-journal", kWorkFile}, {file + "-wal", kWorkFile},
            {file + "-shm", kWorkFile}, {CommandLock(), kWorkFile},     {LifeLock(), kWorkFile}};
}

bool SqliteTarget::FailTo(const std::string& action) {
    const std::string words = settings_.name.file + ": " + action + ": " +
                              (database_ ? sqlite3_errmsg(database_.get()) : "out of memory");
    return !database_ || MayHeal(sqlite3_errcode(database_.get())) ? Fail(words) : Refuse(words);
}

bool SqliteTarget::Open() {
    if (database_) return true;
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(settings_.name.file.c_str(), &opened,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    database_.reset(opened);
    if (code != SQLITE_OK) {
        static_cast<void>(FailTo("the database cannot be opened"));
        database_.reset();
        return false;
    }
    sqlite3_busy_timeout(database_.get(), kBusyMilliseconds);
    // A checkpoint is carried out after the commit that stores it: the commit must outlast a loss of power,
    // the deletion of its journal, too.
    if (Run("PRAGMA synchronous = EXTRA")) return true;
    database_.reset();
    return false;
}

bool SqliteTarget::Run(const std::string& sql) {
    return sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK || FailTo(sql);
}

bool SqliteTarget::Prepare(const std::string& sql, Statement& statement) {
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &prepared, nullptr);
    statement.reset(prepared);
    return code == SQLITE_OK || FailTo(sql);
}

bool SqliteTarget::FetchNumber(const std::string& sql, std::uint64_t& number) {
    Statement statement;
    if (!Prepare(sql, statement)) return false;
    if (sqlite3_step(statement.get()) != SQLITE_ROW) return FailTo(sql);
    number = static_cast<std::uint64_t>(sqlite3_column_int64(statement.get(), 0));
    return true;
}

bool SqliteTarget::PrepareInsertion() {
    return Prepare("INSERT INTO " + Table() + " (id, record) VALUES (?, ?)", insertion_);
}

bool SqliteTarget::LoadState(std::optional<RestartState>& state) {
    state.reset();
    if (ProbePath(settings_.name.file) == PathKind::kMissing) return true;
    std::uint64_t tables = 0;
    if (!Open() || !FetchNumber("SELECT count(*) FROM sqlite_master WHERE name = 'mqam_restart'", tables)) {
        return false;
    }
    if (tables == 0) return true;
    Statement statement;
    if (!Prepare("SELECT state FROM mqam_restart WHERE target = '" + key_ + "'", statement)) {
        return false;
    }
    const int code = sqlite3_step(statement.get());
    if (code == SQLITE_DONE) return true;
    if (code != SQLITE_ROW) return FailTo("the restart information cannot be read");
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
    if (settings_.append || ProbePath(settings_.name.file) == PathKind::kMissing) return false;
    std::uint64_t found = 0;
    // What cannot be looked into is not free either.
    if (!Open() ||
        !FetchNumber("SELECT count(*) FROM sqlite_master WHERE name = '" + key_ + "' COLLATE NOCASE",
                     found)) {
        return true;
    }
    return found != 0 && (!FetchNumber("SELECT EXISTS (SELECT 1 FROM " + Table() + ")", found) || found != 0);
}

bool SqliteTarget::Begin(RestartState& state) {
    if (!Open()) return false;
    if (IsOccupied() && !settings_.force) {
        return Refuse("table " + settings_.name.table + " of " + settings_.name.file +
                      " has rows; give --force to replace them, or --append to add to them");
    }
    if (!Run("BEGIN IMMEDIATE") ||
        !Run("CREATE TABLE IF NOT EXISTS mqam_restart (target TEXT PRIMARY KEY, state TEXT NOT NULL)") ||
        !Run("CREATE TABLE IF NOT EXISTS " + Table() + " (id INTEGER PRIMARY KEY, record BLOB NOT NULL)") ||
        // A table of another shape is found before anything is stored.
        !PrepareInsertion() || (settings_.force && !Run("DELETE FROM " + Table())) ||
        !FetchNumber("SELECT ifnull(max(id), 0) FROM " + Table(), rows_)) {
        return false;
    }
    state.targetLength = rows_;
    return WriteState(state) && Run("COMMIT");
}

bool SqliteTarget::EndsWithLastRecord(const RestartState& state) {
    if (state.lastRecordLength == 0) return true;
    Statement statement;
    if (!Prepare("SELECT record FROM " + Table() + " WHERE id = " + std::to_string(rows_), statement)) {
        return false;
    }
    const int code = sqlite3_step(statement.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) return FailTo("the last row cannot be read");
    const auto* const record = static_cast<const char*>(sqlite3_column_blob(statement.get(), 0));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 0));
    if (length == state.lastRecordLength && DigestOf(record, length) == state.lastRecordDigest) return true;
    return Refuse("the last row of table " + settings_.name.table + " in " + settings_.name.file +
                  " is not the last record loaded: something else has changed the table; undo that and run "
                  "the same command again");
}

bool SqliteTarget::CutBack(const RestartState& state) {
    if (!Open()) return false;
    if (!FetchNumber("SELECT ifnull(max(id), 0) FROM " + Table(), rows_)) return false;
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
    if (!IsInTransaction() && !Run("BEGIN IMMEDIATE")) return false;
    sqlite3_stmt* const insertion = insertion_.get();
    sqlite3_bind_int64(insertion, 1, static_cast<sqlite3_int64>(rows_ + 1));
    sqlite3_bind_blob64(insertion, 2, record, length, SQLITE_STATIC);
    const bool inserted = sqlite3_step(insertion) == SQLITE_DONE;
    if (sqlite3_reset(insertion) != SQLITE_OK || !inserted) return FailTo("a row cannot be inserted");
    ++rows_;
    return true;
}

bool SqliteTarget::WriteState(const RestartState& state) {
    const std::string text = FormatRestartState(state);
    Statement statement;
    if (!Prepare(
            "INSERT INTO mqam_restart (target, state) VALUES (?, ?) ON CONFLICT (target) DO UPDATE SET state "
            "= excluded.state",
            statement)) {
        return false;
    }
    sqlite3_bind_text(statement.get(), 1, key_.c_str(), -1, SQLITE_STATIC);
    sqlite3_bind_text(statement.get(), 2, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    return sqlite3_step(statement.get()) == SQLITE_DONE ||
           FailTo("the restart information cannot be written");
}

bool SqliteTarget::Store(const RestartState& state) {
    return WriteState(state) && (!IsInTransaction() || Run("COMMIT"));
}

bool SqliteTarget::StoreEnd(const RestartState& state) {
    if (!Open()) return false;
    if (IsInTransaction() && !Run("ROLLBACK")) return false;
    return WriteState(state);
}

}  // namespace

std::unique_ptr<RestartableTarget> MakeSqliteTarget(const SqliteTargetSettings& settings,
                                                    std::string& /*complaint*/) {
    return std::make_unique<SqliteTarget>(settings);
}
