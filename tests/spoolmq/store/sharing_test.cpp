// SPDX-License-Identifier: Apache-2.0

// Tests several programs that use one queue at the same time.
#include <algorithm>
#include <map>

#include "tests/spoolmq/support/spool_test.h"

namespace {

class SharingTest : public SpoolTest {};

TEST_F(SharingTest, ConcurrentPuttersAndReadersLoseAndRepeatNothing) {
    const int messages = 150;
    std::vector<ChildProcess> actors;
    for (const char* batch : {"1", "4", "9"}) {
        actors.push_back(StartActor({"connect", "QM1", "open", "Q", "2", "consume", batch}));
    }
    for (const char* text : {"a", "b"}) {
        actors.push_back(
            StartActor({"connect", "QM1", "open", "Q", "16", "put", text, std::to_string(messages)}));
    }
    actors.push_back(StartActor(
        {"connect", "QM1", "open", "Q", "16", "put-sync", "c", std::to_string(messages), "commit"}));
    for (ChildProcess& actor : actors) {
        EXPECT_EQ(0, WaitForChild(&actor));
    }
    std::map<std::string, int> got;
    for (const std::string& line : Log()) {
        if (line.rfind("ok ", 0) == 0) {
            ++got[line.substr(3)];
        }
    }
    EXPECT_EQ(3U * messages, got.size());
    for (const auto& [message, times] : got) {
        EXPECT_EQ(1, times) << message;
    }
    EXPECT_TRUE(Drain().empty());
    EXPECT_TRUE(AreUnitsEmpty());
}

TEST_F(SharingTest, AReaderSeesTheMessagesOfEachPutterInOrder) {
    const int messages = 200;
    std::vector<ChildProcess> actors;
    actors.push_back(StartActor({"connect", "QM1", "open", "Q", "4", "consume", "1"}));
    for (const char* text : {"a", "b"}) {
        actors.push_back(
            StartActor({"connect", "QM1", "open", "Q", "16", "put", text, std::to_string(messages)}));
    }
    for (ChildProcess& actor : actors) {
        EXPECT_EQ(0, WaitForChild(&actor));
    }
    std::map<char, int> next;
    for (const std::string& line : Log()) {
        if (line.rfind("ok ", 0) != 0) {
            continue;
        }
        EXPECT_EQ(next[line[3]], std::stoi(line.substr(5))) << line;
        ++next[line[3]];
    }
    EXPECT_EQ(messages, next['a']);
    EXPECT_EQ(messages, next['b']);
}

}  // namespace
