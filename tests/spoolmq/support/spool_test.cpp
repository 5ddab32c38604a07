// SPDX-License-Identifier: Apache-2.0
#include "tests/spoolmq/support/spool_test.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include "platform/environment.h"

namespace fs = std::filesystem;

std::string ReadAll(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    return content.str();
}

void WriteAll(const fs::path& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary);
    file << content;
}

namespace {

// Writes the content to `aside` and renames that to `path`, so that a reader never sees half of it. Windows
// does not replace a file that a reader has open, so the rename is repeated until the reader is done.
void ReplaceFile(const fs::path& path, const fs::path& aside, const std::string& content) {
    WriteAll(aside, content);
    std::error_code failure;
    for (int tries = 0; tries < 200; ++tries) {
        fs::rename(aside, path, failure);
        if (!failure) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ADD_FAILURE() << path << ": " << failure.message();
}

}  // namespace

SpoolTest::SpoolTest() {
    std::random_device random;
    const fs::path temp = fs::temp_directory_path();
    do {
        root_ = temp / ("spoolmq-" + std::to_string(random()));
    } while (!fs::create_directory(root_));
    fs::create_directories(QueuePath());
    platform::SetEnvironment("SPOOLMQ_DIR", root_.generic_string());
    platform::SetEnvironment("SPOOLMQ_FAULTS", "");
    platform::SetEnvironment("SPOOLMQ_FAULT_FILE", "");
    platform::SetEnvironment("MQ_CONNECT_TYPE", "");
}

SpoolTest::~SpoolTest() {
    if (connection_ != -1) {
        static_cast<void>(Disconnect(&connection_));
    }
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

void SpoolTest::SetQmgr(const std::string& attributes) const {
    ReplaceFile(root_ / "QM1" / "qmgr.ini", root_ / "QM1" / "qmgr.new", attributes);
}

void SpoolTest::SetQueue(const std::string& attributes) const {
    ReplaceFile(QueuePath() / ".queue.ini", QueuePath() / ".queue.new", attributes);
}

void SpoolTest::WriteQueueFile(const std::string& name, const std::string& content) const {
    WriteAll(QueuePath() / name, content);
}

void SpoolTest::ConnectAndOpen() {
    ASSERT_EQ(kDone, Connect("QM1", &connection_));
    ASSERT_EQ(kDone, Open(connection_, "Q", kInputShared | kBrowse | kOutput | kInquire, &object_));
}

void SpoolTest::ConnectAgain(MQHCONN* connection, MQHOBJ* object) {
    ASSERT_EQ(kDone, ConnectShared("QM1", connection));
    ASSERT_EQ(kDone, Open(*connection, "Q", kInputShared | kBrowse | kOutput | kInquire, object));
}

std::vector<std::string> SpoolTest::Drain() {
    std::vector<std::string> bodies;
    MQHCONN connection = -1;
    MQHOBJ object = -1;
    ConnectAgain(&connection, &object);
    for (;;) {
        const Got got = Get(connection, object, kNoSync);
        if (got.codes.reason == MQRC_NO_MSG_AVAILABLE) {
            break;
        }
        EXPECT_EQ(kDone, got.codes);
        if (got.codes != kDone) {
            break;
        }
        const std::string count = got.md.BackoutCount == 0 ? "" : "~" + std::to_string(got.md.BackoutCount);
        bodies.push_back(got.body + count);
    }
    EXPECT_EQ(kDone, Disconnect(&connection));
    return bodies;
}

std::vector<std::string> SpoolTest::MessageFiles() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(QueuePath())) {
        std::string name = entry.path().filename().string();
        if (entry.is_regular_file() && name[0] != '.') {
            names.push_back(std::move(name));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool SpoolTest::AreUnitsEmpty() const {
    const fs::path units = root_ / "QM1" / ".units";
    return !fs::exists(units) || fs::is_empty(units);
}

fs::path SpoolTest::LogPath(int actor) const {
    return root_ / ("log." + std::to_string(actor));
}

ChildProcess SpoolTest::StartActor(const std::vector<std::string>& steps) {
    // Each actor has its own log: on Windows appending consists of a seek and a write, so two programs that
    // append at the same time overwrite each other.
    std::vector<std::string> arguments = {SPOOLMQ_ACTOR, LogPath(actors_++).generic_string()};
    arguments.insert(arguments.end(), steps.begin(), steps.end());
    return StartChild(arguments);
}

int SpoolTest::RunActor(const std::vector<std::string>& steps) {
    ChildProcess child = StartActor(steps);
    return WaitForChild(&child);
}

std::vector<std::string> SpoolTest::Log() const {
    std::vector<std::string> lines;
    for (int actor = 0; actor < actors_; ++actor) {
        std::ifstream file(LogPath(actor), std::ios::binary);
        for (std::string line; std::getline(file, line);) {
            lines.push_back(line);
        }
    }
    return lines;
}

void SpoolTest::RemoveLogs() {
    while (actors_ > 0) {
        fs::remove(LogPath(--actors_));
    }
}

void SpoolTest::WaitForLog(const std::string& line) const {
    for (;;) {
        const std::vector<std::string> lines = Log();
        if (std::find(lines.begin(), lines.end(), line) != lines.end()) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}
