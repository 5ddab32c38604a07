// SPDX-License-Identifier: Apache-2.0
#include "tests/crash/load_trial.h"

#include <sqlite3.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace {

namespace fs = std::filesystem;

// Each message begins with its number, so that no message begins with the bytes of the one before. Otherwise
// the two could not be distinguished from a redelivery. One in ten is longer than a stream's buffer.
std::string ComposeMessage(int index) {
    unsigned seed = static_cast<unsigned>(index) * 2654435761U + 1;
    const auto next = [&seed] {
        seed = seed * 1664525U + 1013904223U;
        return seed >> 16;
    };
    const std::size_t length = index % 10 == 7 ? 4200 + next() % 5000 : 1 + next() % 300;
    std::string bytes = std::to_string(index) + ":";
    while (bytes.size() < length)
        bytes += static_cast<char>(next() & 0xFF);
    return bytes;
}

std::string QueueFolder(const std::string& folder) {
    return folder + "/load/spool/QM1/Q1";
}

std::string ReadWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> ReadRecordsOfFile(const std::string& path, std::string& wrong) {
    const std::string bytes = ReadWhole(path);
    std::vector<std::string> records;
    std::size_t begin = 0;
    while (bytes.size() - begin >= 4) {
        std::size_t length = 0;
        for (std::size_t i = 4; i > 0; --i)
            length = length << 8 | static_cast<unsigned char>(bytes[begin + i - 1]);
        if (length > bytes.size() - begin - 4) break;
        records.push_back(bytes.substr(begin + 4, length));
        begin += 4 + length;
    }
    if (begin != bytes.size()) wrong = "the target ends within a record";
    return records;
}

std::vector<std::string> ReadRecordsOfTable(const std::string& path, std::string& wrong) {
    std::vector<std::string> records;
    sqlite3* database = nullptr;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK &&
        sqlite3_prepare_v2(database, "SELECT record FROM t ORDER BY id", -1, &statement, nullptr) ==
            SQLITE_OK) {
        int code = SQLITE_OK;
        while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
            const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement, 0));
            const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, 0));
            records.emplace_back(bytes != nullptr ? bytes : "", length);
        }
        if (code != SQLITE_DONE) wrong = sqlite3_errmsg(database);
    } else {
        wrong = sqlite3_errmsg(database);
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return records;
}

std::string NameRecord(const std::string& record) {
    return "\"" + record.substr(0, record.find(':')) + "\" (" + std::to_string(record.size()) + " bytes)";
}

std::string CompareRecords(const CrashClass& crashClass, const std::vector<std::string>& records) {
    std::size_t index = 0;
    for (; index < records.size() && index < static_cast<std::size_t>(crashClass.messages); ++index) {
        const std::string message = ComposeMessage(static_cast<int>(index));
        if (records[index] != message) {
            return "record " + std::to_string(index) + " is " + NameRecord(records[index]) + " and not " +
                   NameRecord(message);
        }
    }
    if (records.size() == static_cast<std::size_t>(crashClass.messages)) return "";
    return std::to_string(records.size()) + " records of " + std::to_string(crashClass.messages);
}

// Compares the names in the load's directory with those that a complete load leaves. Returns what is wrong,
// or an empty string. The queue manager's own files are not examined.
std::string CompareFiles(const CrashClass& crashClass, const std::string& folder) {
    const bool isFile = crashClass.target == TargetKind::kFile;
    std::set<std::string> expected = {"spool", isFile ? "out" : "db"};
    if (isFile) expected.insert(crashClass.isPlainest ? "out.load" : "restart");
    std::string wrong;
    if (isFile && crashClass.isPlainest) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder + "/load/out.load")) {
            if (entry.path().filename() != "restart") wrong += entry.path().string() + " is left; ";
        }
        if (!fs::exists(folder + "/load/out.load/restart")) wrong += "out.load/restart is missing; ";
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(folder + "/load")) {
        const std::string name = entry.path().filename();
        if (expected.erase(name) == 0) wrong += name + " is left; ";
    }
    for (const std::string& name : expected)
        wrong += name + " is missing; ";
    return wrong;
}

std::string CheckQueueManager(const std::string& folder) {
    std::string wrong;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder + "/load/spool")) {
        const std::string path = entry.path().lexically_relative(folder + "/load/spool");
        if (entry.path().extension() == ".msg") wrong += path + " is left on the queue; ";
        if (entry.path().parent_path().filename() == ".units") wrong += path + " is left; ";
    }
    return wrong;
}

}  // namespace

bool MakeTrial(const CrashClass& crashClass, const std::string& folder) {
    std::error_code error;
    fs::create_directories(QueueFolder(folder), error);
    if (error) return false;
    for (int index = 0; index < crashClass.messages; ++index) {
        char name[64];
        std::snprintf(name, sizeof name, "/20260101-000000-%09d.msg", index + 1);
        std::ofstream file(QueueFolder(folder) + name, std::ios::binary);
        file << ComposeMessage(index);
        if (!file.flush()) return false;
    }
    return true;
}

ProgramOrder ComposeLoad(const CrashClass& crashClass, const std::string& folder, const Programs& programs,
                         int checkpointEvery, bool goesOn) {
    const std::string load = folder + "/load";
    ProgramOrder order;
    order.ownFolder = load;
    order.storeFolder = load + "/spool";
    order.console = folder + "/console";
    order.faultPlanFile = folder + "/faults";
    std::ofstream(order.faultPlanFile, std::ios::trunc).flush();
    order.environment = {{"SPOOLMQ_DIR", order.storeFolder},
                         {"SPOOLMQ_FAULT_FILE", order.faultPlanFile},
                         {"MQAMOD_MQ_LIBRARY", programs.mqLibrary}};
    order.arguments = {programs.mqam,
                       "load",
                       "--qmgr",
                       "QM1",
                       "--queue",
                       "Q1",
                       "--rwait",
                       "1",
                       "--quiet",
                       "--checkpoint-every",
                       std::to_string(checkpointEvery)};
    const auto add = [&order](const std::vector<std::string>& more) {
        order.arguments.insert(order.arguments.end(), more.begin(), more.end());
    };
    if (!crashClass.isPlainest) add({"--ckfile", load + "/ck"});
    if (crashClass.target == TargetKind::kFile) {
        add({"--to", load + "/out", "--format", "length"});
        if (!crashClass.isPlainest) add({"--restart-file", load + "/restart"});
    } else {
        add({"--to", "sqlite:" + load + "/db?table=t"});
    }
    if (crashClass.hasLog) add({"--log", load + "/log"});
    if (goesOn) add({"--retry-for", "60"});
    return order;
}

std::string CheckTarget(const CrashClass& crashClass, const std::string& folder) {
    std::string wrong;
    const std::vector<std::string> records = crashClass.target == TargetKind::kFile
                                                 ? ReadRecordsOfFile(folder + "/load/out", wrong)
                                                 : ReadRecordsOfTable(folder + "/load/db", wrong);
    if (!wrong.empty()) wrong += "; ";
    const std::string difference = CompareRecords(crashClass, records);
    if (!difference.empty()) wrong += difference + "; ";
    return wrong + CheckQueueManager(folder);
}

std::string CheckLoaded(const CrashClass& crashClass, const std::string& folder) {
    return CheckTarget(crashClass, folder) + CompareFiles(crashClass, folder);
}
