// SPDX-License-Identifier: Apache-2.0

// A fixture that gives each test a spool directory of its own, with queue manager QM1 and queue Q.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/spoolmq/support/child_process.h"
#include "tests/spoolmq/support/mq_client.h"

class SpoolTest : public testing::Test {
  protected:
    SpoolTest();
    ~SpoolTest() override;

    [[nodiscard]] std::string Root() const { return root_.generic_string(); }
    [[nodiscard]] std::filesystem::path QueuePath() const { return root_ / "QM1" / "Q"; }
    /// Replaces the contents of qmgr.ini.
    void SetQmgr(const std::string& attributes) const;
    /// Replaces the contents of .queue.ini.
    void SetQueue(const std::string& attributes) const;
    void WriteQueueFile(const std::string& name, const std::string& content) const;

    /// Connects and opens Q for shared input, browse, output and inquire.
    void ConnectAndOpen();
    /// Makes another connection, whose handle all threads share, and opens Q with the same options.
    void ConnectAgain(MQHCONN* connection, MQHOBJ* object);
    /// Takes all messages without syncpoint and returns their bodies, each followed by "~" and its back-out
    /// count if that is not 0.
    std::vector<std::string> Drain();
    /// Returns the names of the message files, sorted.
    [[nodiscard]] std::vector<std::string> MessageFiles() const;
    [[nodiscard]] bool AreUnitsEmpty() const;

    /// Starts spoolmq_actor, which carries out the given steps; see actor.cpp.
    [[nodiscard]] ChildProcess StartActor(const std::vector<std::string>& steps);
    /// Runs an actor to its end and returns its exit code.
    int RunActor(const std::vector<std::string>& steps);
    /// Returns the lines that actors have logged; those of one actor are in order.
    [[nodiscard]] std::vector<std::string> Log() const;
    /// Removes the logs of all actors, none of which may be running.
    void RemoveLogs();
    void WaitForLog(const std::string& line) const;

    MQHCONN connection_ = -1;
    MQHOBJ object_ = -1;

  private:
    [[nodiscard]] std::filesystem::path LogPath(int actor) const;

    std::filesystem::path root_;
    int actors_ = 0;
};

[[nodiscard]] std::string ReadAll(const std::filesystem::path& path);
void WriteAll(const std::filesystem::path& path, const std::string& content);
