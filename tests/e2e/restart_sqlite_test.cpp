// SPDX-License-Identifier: Apache-2.0

// Tests restartable loads into a SQLite table.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/e2e/load_site.h"
#include "tests/support/test_directory.h"

namespace {

namespace fs = std::filesystem;
using Arguments = LoadSite::Arguments;
using Rows = std::vector<std::string>;

// A database that another program keeps open.
class Database {
  public:
    explicit Database(const std::string& path) {
        EXPECT_EQ(sqlite3_open(path.c_str(), &database_), SQLITE_OK);
        sqlite3_busy_timeout(database_, 10000);
    }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database() { sqlite3_close(database_); }

    void Run(const std::string& sql) const {
        EXPECT_EQ(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sql << ": " << sqlite3_errmsg(database_);
    }

    // Returns the first column of every row as bytes.
    [[nodiscard]] Rows Fetch(const std::string& sql) const {
        Rows rows;
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr), SQLITE_OK) << sql;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, 0));
            const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, 0));
            rows.push_back(length == 0 ? std::string() : std::string(bytes, length));
        }
        sqlite3_finalize(statement);
        return rows;
    }

  private:
    sqlite3* database_ = nullptr;
};

class SqliteLoad : public testing::Test {
  protected:
    LoadSite& Add(const std::string& name, int messages, const std::string& faults = "",
                  const std::string& table = "orders") {
        sites_.push_back(std::make_unique<LoadSite>(folder_.Root(), name));
        LoadSite& site = *sites_.back();
        site.Put(messages);
        site.PlanFaults(faults);
        site.LeaveOut("--restart-file");
        site.Set("--to", "sqlite:" + site.Path("db") + "?table=" + table);
        return site;
    }

    LoadSite& AddUnfinished(const std::string& name) {
        LoadSite& site = Add(name, 10, "MQCMIT 5 kill after");
        EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
        EXPECT_EQ(RowsOf(site).size(), 3U);
        site.PlanFaults("");
        return site;
    }

    static Rows RowsOf(const LoadSite& site, const std::string& table = "orders") {
        return Database(site.Path("db")).Fetch("SELECT record FROM " + table + " ORDER BY id");
    }

    static std::string StateOf(const LoadSite& site, const std::string& table = "orders") {
        const Rows rows =
            Database(site.Path("db")).Fetch("SELECT state FROM mqam_restart WHERE target = '" + table + "'");
        return rows.size() == 1 ? rows.front() : "(" + std::to_string(rows.size()) + " rows)";
    }

    static testing::AssertionResult IsDone(const LoadSite& site, int exitCode = 0) {
        const auto fail = [&site](const std::string& what) {
            return testing::AssertionFailure() << site.Name() << ": " << what << "\n" << site.Error();
        };
        if (site.Result().exitCode != exitCode)
            return fail("exit code " + std::to_string(site.Result().exitCode));
        if (RowsOf(site) != site.Messages()) return fail("the rows differ");
        if (site.Depth() != 0) return fail("messages are left");
        if (site.Files() != "db") return fail("files: " + site.Files());
        if (!Contains(StateOf(site), "phase=complete\n")) return fail(StateOf(site));
        return testing::AssertionSuccess();
    }

    // Checks that the command refuses with an explanation, and that no row, state or message changes.
    static void ExpectRefusal(LoadSite& site, const Arguments& more, const std::string& words,
                              int exitCode = 1) {
        const std::string before = ReadFileIfAny(site.Path("db"));
        const std::string checkpoint = ReadFileIfAny(site.CheckpointFile());
        const int depth = site.Depth();
        site.Run(more);
        EXPECT_EQ(site.Result().exitCode, exitCode) << site.Error();
        EXPECT_TRUE(Contains(site.Error(), words)) << words << "\n" << site.Error();
        EXPECT_TRUE(ReadFileIfAny(site.Path("db")) == before) << site.Error();
        EXPECT_TRUE(ReadFileIfAny(site.CheckpointFile()) == checkpoint) << site.Error();
        EXPECT_EQ(site.Depth(), depth);
    }

    void RunAllAgain(const Arguments& more = {}) {
        for (const auto& site : sites_)
            site->PlanFaults("");
        RunAll(sites_, more);
    }

    TestDirectory folder_;
    std::vector<std::unique_ptr<LoadSite>> sites_;
};

TEST_F(SqliteLoad, InOneGoEveryMessageIsARowAndTheStateIsAReceipt) {
    LoadSite& site = Add("usual", 10);
    site.Put(std::string("\0\n'\"\xFF;", 6));
    LoadSite& unnamed = Add("unnamed", 2);
    unnamed.Set("--to", "sqlite:" + unnamed.Path("db"));
    LoadSite& empty = Add("empty", 0);
    RunAll(sites_);
    EXPECT_TRUE(IsDone(site));
    EXPECT_TRUE(IsDone(empty));
    EXPECT_EQ(Database(site.Path("db")).Fetch("SELECT CAST(max(id) AS TEXT) FROM orders"), Rows{"11"});
    EXPECT_TRUE(Contains(site.Error(), "\n  target    sqlite:" + site.Path("db") + "?table=orders\n"))
        << site.Error();
    EXPECT_EQ(RowsOf(unnamed, "records"), unnamed.Messages());
    // This is the same command again.
    site.Run({"--force"});
    EXPECT_TRUE(Contains(site.Error(), "this load is already complete")) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "(row 'orders' of table mqam_restart in " + site.Path("db") + ")\n"))
        << site.Error();
    EXPECT_TRUE(IsDone(site, 11));
}

TEST_F(SqliteLoad, H2_T1_AKilledWorkerCostsNoMessageAndDoublesNone) {
    for (const char* place :
         {"MQCONNX 1 kill before", "MQOPEN 1 kill after", "MQGET 1 kill after", "MQCMIT 1 kill before",
          "MQCMIT 3 kill after", "MQGET 4 kill before", "MQCMIT 5 kill before", "MQCMIT 7 kill after",
          "MQCMIT 10 kill before", "MQDISC 1 kill before", "MQDISC 1 kill after", "MQCMIT 5 fail 2 2009",
          "MQCMIT 5 fail-after 2 2009", "MQGET 6 fail 2 2162"})
        Add("place" + std::to_string(sites_.size()), 10, place);
    RunAll(sites_);
    for (const auto& site : sites_) {
        EXPECT_EQ(site->Result().exitCode, 9) << site->Name() << "\n" << site->Error();
        EXPECT_TRUE(Contains(site->Error(), "  next      run the same command again")) << site->Error();
    }
    RunAllAgain();
    for (const auto& site : sites_)
        EXPECT_TRUE(IsDone(*site));
}

TEST_F(SqliteLoad, WithRetryForTheCommandGoesOnByItself) {
    LoadSite& site = Add("retry", 10, "MQCMIT 5 fail 2 2009");
    site.Run({"--retry-for", "60"});
    EXPECT_TRUE(Contains(site.Error(), "mqam load: attempt 1 in 1 s; 3 records are loaded\n"))
        << site.Error();
    EXPECT_TRUE(IsDone(site));
}

TEST_F(SqliteLoad, RowsThatAreThereNeedForceOrAppend) {
    LoadSite& append = Add("append", 5, "MQCMIT 5 kill before");
    LoadSite& force = Add("force", 5, "MQCMIT 5 kill before");
    LoadSite& empty = Add("empty", 5);
    for (LoadSite* site : {&append, &force, &empty}) {
        const Database database(site->Path("db"));
        database.Run("CREATE TABLE Orders (id INTEGER PRIMARY KEY, record BLOB NOT NULL)");
        if (site != &empty) database.Run("INSERT INTO Orders VALUES (7, 'earlier')");
    }
    ExpectRefusal(append, {},
                  "mqam load: table orders of " + append.Path("db") +
                      " has rows; give --force to replace them, or --append to add to them\n");
    append.Start({"--append"});
    force.Start({"--force"});
    for (LoadSite* site : {&append, &force}) {
        EXPECT_EQ(site->Wait().exitCode, 9) << site->Error();
        site->PlanFaults("");
    }
    append.Start({"--append"});
    force.Start({"--force"});
    empty.Start();
    for (LoadSite* site : {&append, &force, &empty})
        site->Wait();
    EXPECT_TRUE(IsDone(force));
    EXPECT_TRUE(IsDone(empty));
    Rows expected = append.Messages();
    expected.insert(expected.begin(), "earlier");
    EXPECT_EQ(append.Result().exitCode, 0) << append.Error();
    EXPECT_EQ(RowsOf(append), expected);
}

TEST_F(SqliteLoad, TheNameOfATableMayBeWrittenInCapitalsTheSecondTime) {
    LoadSite& site = AddUnfinished("capitals");
    site.Set("--to", "sqlite:" + site.Path("db") + "?table=ORDERS");
    ExpectRefusal(
        site, {"--force"},
        "belongs to an unfinished load with target sqlite:" + site.Path("db") + "?table=orders, not ");
    site.Set("--to", "sqlite:" + site.Path("db") + "?table=orders");
    site.Run();
    EXPECT_TRUE(IsDone(site));
}

TEST_F(SqliteLoad, TwoTablesOfOneDatabaseAreTwoLoads) {
    LoadSite& orders = AddUnfinished("orders");
    LoadSite& items = Add("items", 4);
    items.Set("--to", "sqlite:" + orders.Path("db") + "?table=items");
    items.Start();
    // A load that waits for messages does not hinder another one.
    orders.Run();
    items.Wait();
    EXPECT_EQ(items.Result().exitCode, 0) << items.Error();
    EXPECT_EQ(RowsOf(orders, "items"), items.Messages());
    EXPECT_TRUE(IsDone(orders));
    EXPECT_TRUE(Contains(StateOf(orders, "items"), "phase=complete\n"));
}

TEST_F(SqliteLoad, T1_ATableThatSomebodyChangedIsRefusedUntilThatIsUndone) {
    LoadSite& more = AddUnfinished("more");
    LoadSite& fewer = AddUnfinished("fewer");
    LoadSite& gone = AddUnfinished("gone");
    Database(more.Path("db")).Run("INSERT INTO orders VALUES (4, 'x')");
    ExpectRefusal(more, {},
                  "mqam load: the last row of table orders in " + more.Path("db") +
                      " is 4, but the load had stored 3: something else has changed the table; undo that and "
                      "run the same command again\n");
    Database(more.Path("db")).Run("DELETE FROM orders WHERE id = 4");
    const std::string last = RowsOf(fewer).back();
    Database(fewer.Path("db")).Run("DELETE FROM orders WHERE id = 3");
    ExpectRefusal(fewer, {}, " is 2, but the load had stored 3: ");
    Database(fewer.Path("db")).Run("INSERT INTO orders VALUES (3, CAST('" + last + "' AS BLOB))");
    // The table has the right number of rows, but they are not those of the load.
    LoadSite& other = AddUnfinished("other");
    const std::string own = RowsOf(other).back();
    Database(other.Path("db")).Run("UPDATE orders SET record = 'another' WHERE id = 3");
    ExpectRefusal(other, {},
                  "mqam load: the last row of table orders in " + other.Path("db") +
                      " is not the last record loaded: something else has changed the table; undo that and "
                      "run the same command again\n");
    Database(other.Path("db")).Run("UPDATE orders SET record = CAST('" + own + "' AS BLOB) WHERE id = 3");
    Database(gone.Path("db")).Run("ALTER TABLE orders RENAME TO aside");
    ExpectRefusal(gone, {}, "no such table: orders");
    Database(gone.Path("db")).Run("ALTER TABLE aside RENAME TO orders");
    RunAll(sites_);
    for (const auto& site : sites_)
        EXPECT_TRUE(IsDone(*site));
}

// A table may ask SQLite to drop or replace rows that break a constraint.
TEST_F(SqliteLoad, NoRowIsDroppedWhateverTheTableAsksFor) {
    LoadSite& ignore = Add("ignore", 0);
    LoadSite& replace = Add("replace", 0);
    for (LoadSite* site : {&ignore, &replace}) {
        for (const char* message : {"a", "b", "a"})
            site->Put(message);
        Database(site->Path("db"))
            .Run("CREATE TABLE orders (id INTEGER PRIMARY KEY, record BLOB UNIQUE ON CONFLICT " +
                 site->Name() + ")");
        EXPECT_EQ(site->Run().exitCode, 3) << site->Error();
        EXPECT_TRUE(Contains(site->Error(), "a row cannot be inserted: UNIQUE constraint failed"))
            << site->Error();
    }
}

TEST_F(SqliteLoad, ATableWithATriggerOnInsertionsIsRefused) {
    LoadSite& site = Add("trigger", 3);
    Database database(site.Path("db"));
    database.Run("CREATE TABLE orders (id INTEGER PRIMARY KEY, record BLOB)");
    database.Run("CREATE TRIGGER drops BEFORE INSERT ON orders BEGIN SELECT RAISE(IGNORE); END");
    ExpectRefusal(site, {}, "has a trigger that may act on an insertion");
    database.Run("DROP TRIGGER drops");
    site.Run();
    EXPECT_TRUE(IsDone(site));
}

TEST_F(SqliteLoad, ATypoLeavesTheTableAsItWasAndNoDatabaseBehind) {
    LoadSite& fresh = Add("fresh", 3);
    fresh.Set("--queue", "TYPO");
    EXPECT_EQ(fresh.Run().exitCode, 2) << fresh.Error();
    EXPECT_FALSE(fs::exists(fresh.Path("db")));
    LoadSite& forced = Add("forced", 2);
    Database(forced.Path("db")).Run("CREATE TABLE orders (id INTEGER PRIMARY KEY, record BLOB)");
    Database(forced.Path("db")).Run("INSERT INTO orders VALUES (1, 'precious')");
    const std::string before = ReadFileIfAny(forced.Path("db"));
    forced.Set("--queue", "TYPO");
    EXPECT_EQ(forced.Run({"--force"}).exitCode, 2) << forced.Error();
    EXPECT_TRUE(ReadFileIfAny(forced.Path("db")) == before);
    for (LoadSite* site : {&fresh, &forced}) {
        site->Set("--queue", "Q1");
        EXPECT_EQ(site->Run({"--force"}).exitCode, 0) << site->Error();
        EXPECT_EQ(RowsOf(*site), site->Messages());
    }
}

TEST_F(SqliteLoad, ThePlainestCommandLeavesOnlyTheDatabase) {
    LoadSite& site = Add("plainest", 10, "MQCMIT 5 kill after");
    site.LeaveOut("--ckfile");
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    EXPECT_TRUE(fs::exists(site.Path("db.orders.load") + "/checkpoint"));
    site.PlanFaults("");
    site.Run();
    EXPECT_TRUE(IsDone(site));
}

TEST_F(SqliteLoad, WhatIsNoDatabaseOrNoTableOfThisKindIsRefused) {
    LoadSite& text = Add("text", 3);
    std::ofstream(text.Path("db")) << std::string(5000, 'x');
    ExpectRefusal(text, {"--force"}, "file is not a database");
    LoadSite& folder = Add("folder", 3);
    folder.Set("--to", "sqlite:" + folder.Path("none/db"));
    ExpectRefusal(folder, {}, "none/db.records.load, cannot be created: ", 3);
    LoadSite& shape = Add("shape", 3);
    Database(shape.Path("db")).Run("CREATE TABLE orders (name TEXT)");
    ExpectRefusal(shape, {"--append"}, "orders has no column named id");
    LoadSite& options = Add("options", 3);
    ExpectRefusal(
        options, {"--restart-file", options.RestartFile()},
        "--restart-file does not go with a SQLite target: the database keeps the restart information");
    ExpectRefusal(options, {"--format", "raw"},
                  "--format does not go with a SQLite target: a row is a record");
    options.Set("--to", "sqlite:" + options.Path("db") + "?table=mqam_restart");
    ExpectRefusal(options, {}, "'mqam_restart' cannot be the table");
    options.Set("--to", "sqlite:" + options.Path("db"));
    options.Set("--ckfile", options.Path("db"));
    ExpectRefusal(options, {}, "cannot be both target and checkpoint file of the load");
    EXPECT_EQ(options.Files(), "");
}

TEST_F(SqliteLoad, CheckpointCommandsTakeTheTargetForTheRestartFile) {
    LoadSite& site = AddUnfinished("show");
    const auto show = [&site](const std::string& command) {
        return RunProgram(MQAM_PROGRAM,
                          {"checkpoint", command, site.CheckpointFile(), "--restart-file",
                           "sqlite:" + site.Path("db") + "?table=orders"},
                          site.Path("spool"));
    };
    const ProgramResult shown = show("show");
    EXPECT_EQ(shown.exitCode, 0) << shown.standardError;
    EXPECT_TRUE(Contains(shown.standardOutput, ", taken after 3 records, offset ")) << shown.standardOutput;
    EXPECT_TRUE(Contains(shown.standardOutput, "\n  the load resumes after checkpoint "))
        << shown.standardOutput;
    EXPECT_EQ(show("verify").exitCode, 0);
    EXPECT_EQ(show("repair").standardOutput, site.CheckpointFile() + ": nothing to repair\n");
    site.Run();
    EXPECT_TRUE(IsDone(site));
    const ProgramResult over = show("show");
    EXPECT_EQ(over.exitCode, 1);
    EXPECT_TRUE(Contains(over.standardError, "the load of restart information in sqlite:" + site.Path("db") +
                                                 "?table=orders is over: every record is in sqlite:"))
        << over.standardError;
    fs::remove(site.Path("db"));
    EXPECT_TRUE(Contains(show("show").standardError, "?table=orders is missing\n"));
    EXPECT_FALSE(fs::exists(site.Path("db")));
}

TEST_F(SqliteLoad, DamagedRestartInformationIsRefused) {
    LoadSite& site = AddUnfinished("damaged");
    Database(site.Path("db")).Run("UPDATE mqam_restart SET state = replace(state, 'records=3', 'records=4')");
    ExpectRefusal(site, {"--force"},
                  "mqam load: row 'orders' of table mqam_restart in " + site.Path("db") +
                      " is damaged: its checksum does not match its lines; restore an undamaged copy of the "
                      "database\n");
    Database(site.Path("db")).Run("UPDATE mqam_restart SET state = replace(state, 'records=4', 'records=3')");
    site.Run();
    EXPECT_TRUE(IsDone(site));
}

TEST_F(SqliteLoad, ADatabaseThatSomebodyKeepsLockedEndsTheLifeAndTheSameCommandCompletes) {
    LoadSite& begin = AddUnfinished("begin");
    LoadSite& middle = AddUnfinished("middle");
    LoadSite& patient = AddUnfinished("patient");
    {
        const Database first(begin.Path("db"));
        first.Run("BEGIN EXCLUSIVE");
        const Database third(patient.Path("db"));
        third.Run("BEGIN EXCLUSIVE");
        patient.Start({"--retry-for", "60"});
        // While another program reads, rows can be written, but not moved into the database file.
        const Database second(middle.Path("db"));
        second.Run("BEGIN");
        EXPECT_EQ(second.Fetch("SELECT record FROM orders").size(), 3U);
        begin.Start();
        middle.Start();
        begin.Wait();
        middle.Wait();
        EXPECT_TRUE(patient.Program().WaitForError("mqam load: attempt 1 in 1 s\n"));
        third.Run("COMMIT");
        second.Run("COMMIT");
        first.Run("COMMIT");
    }
    patient.Wait();
    EXPECT_TRUE(IsDone(patient));
    sites_.pop_back();
    EXPECT_EQ(begin.Result().exitCode, 3) << begin.Error();
    EXPECT_TRUE(Contains(
        begin.Error(),
        "mqam load: " + begin.Path("db") +
            ": it cannot be opened: database is locked; another program is using the database: let it finish\n  safe      what is loaded stays loaded; how much that is cannot be known"))
        << begin.Error();
    EXPECT_EQ(middle.Result().exitCode, 3) << middle.Error();
    for (LoadSite* site : {&begin, &middle})
        EXPECT_TRUE(Contains(site->Error(), "database is locked")) << site->Error();
    EXPECT_TRUE(Contains(middle.Error(), "  safe      3 records are in sqlite:")) << middle.Error();
    RunAll(sites_);
    for (const auto& site : sites_)
        EXPECT_TRUE(IsDone(*site));
}

TEST_F(SqliteLoad, T2_AFullDiskEndsTheLifeAndTheSameCommandCompletesWhenThereIsRoom) {
    LoadSite& site = Add("full", 0);
    for (int i = 0; i < 300; ++i)
        site.Put(std::to_string(i) + std::string(200, 'x'));
    site.Set("--checkpoint-every", "20");
    site.StartWithFileLimit(40);
    site.Wait();
    EXPECT_EQ(site.Result().exitCode, 3) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), site.Path("db") + ": ")) << site.Error();
    const std::size_t loaded = RowsOf(site).size();
    EXPECT_GT(loaded, 0U);
    EXPECT_LT(loaded, 300U);
    site.Run();
    EXPECT_TRUE(IsDone(site));
}

// ---- files, read with SQLite's JSON functions

// Messages with everything that a JSON text has to escape, and some that are not text.
std::vector<std::string> MessagesForJson() {
    return {"plain",
            "\"quoted\" \\ and / slashes",
            "two\nlines\r\n",
            "tab\tand \x01\x1F control",
            "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC",
            "\xFF\xFE",
            std::string("a\0b", 3),
            "{\"a\":[1]}",
            "\\n is not a line feed",
            "\\"};
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream rest(text);
    for (std::string line; std::getline(rest, line);)
        lines.push_back(line);
    return lines;
}

std::string HexOf(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        text += "0123456789ABCDEF"[static_cast<unsigned char>(c) >> 4];
        text += "0123456789ABCDEF"[static_cast<unsigned char>(c) & 0x0F];
    }
    return text;
}

// Killed at any commit, the load resumes after the last line that is in the file.
TEST_F(SqliteLoad, AJsonFileIsValidAndIsResumed) {
    const std::vector<std::string> messages = MessagesForJson();
    for (const char* fault : {"", "MQCMIT 2 kill after", "MQCMIT 5 kill after", "MQCMIT 8 kill before"}) {
        LoadSite site(folder_.Root(),
                      "json" + std::to_string(sites_.size() + (*fault != '\0' ? fault[7] : 0)));
        for (const std::string& message : messages)
            site.Put(message);
        site.Set("--format", "json");
        site.PlanFaults(fault);
        const ProgramResult first = site.Run();
        EXPECT_EQ(first.exitCode, *fault == '\0' ? 0 : 9) << first.standardError;
        site.PlanFaults("");
        if (*fault != '\0') {
            EXPECT_EQ(site.Run().exitCode, 0) << site.Error();
        }
        const std::vector<std::string> lines = LinesOf(ReadFileIfAny(site.Target()));
        ASSERT_EQ(lines.size(), messages.size()) << fault;
        const Database database(":memory:");
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const std::string json = "CAST(x'" + HexOf(lines[i]) + "' AS TEXT)";
            EXPECT_EQ(database.Fetch("SELECT json_valid(" + json + ")"), Rows{"1"}) << lines[i];
            EXPECT_EQ(database.Fetch("SELECT json_extract(" + json + ", '$.number')"),
                      Rows{std::to_string(i + 1)})
                << lines[i];
            const bool isText = messages[i] != "\xFF\xFE";
            // SQLite ends a text at a NUL.
            if (messages[i].find('\0') != std::string::npos) continue;
            EXPECT_EQ(
                database.Fetch("SELECT json_extract(" + json + (isText ? ", '$.text')" : ", '$.base64')")),
                Rows{isText ? messages[i] : "//4="})
                << lines[i];
        }
    }
}

TEST_F(SqliteLoad, EscapedLineFeedsAreResumedAndAnotherRuleIsRefused) {
    LoadSite site(folder_.Root(), "escaped");
    for (const std::string& message : MessagesForJson())
        site.Put(message);
    site.Set("--on-newline", "escape");
    site.PlanFaults("MQCMIT 5 kill after");
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    site.PlanFaults("");
    site.Set("--on-newline", "keep");
    EXPECT_EQ(site.Run().exitCode, 1) << site.Error();
    site.Set("--on-newline", "escape");
    EXPECT_EQ(site.Run().exitCode, 0) << site.Error();
    const std::vector<std::string> lines = LinesOf(ReadFileIfAny(site.Target()));
    ASSERT_EQ(lines.size(), MessagesForJson().size());
    EXPECT_EQ(lines[2], "two\\nlines\r\\n");
    EXPECT_EQ(lines[8], "\\\\n is not a line feed");
}

}  // namespace
