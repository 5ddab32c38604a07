// SPDX-License-Identifier: Apache-2.0

// The base of every module test: the module loaded as a host loads it, the stand-in MQ library, an empty
// current directory, and the host's requests as methods.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/library.h"
#include "tests/support/expected_error.h"
#include "tests/support/files.h"
#include "tests/support/host_requests.h"
#include "tests/support/mqi_double.h"
#include "tests/support/trace_reader.h"

/// These return the paths of the module, of the stand-in MQ library, and of the one that lacks MQBACK.
std::string ModulePath();
std::string MqDoublePath();
std::string MqDoubleWithoutMqbackPath();

class ModuleFixture : public testing::Test, public HostRequests {
  protected:
    /// Unloads the module. By then the members of derived fixtures, which may restore its imports, are gone.
    ~ModuleFixture() override;
    void SetUp() override;
    void TearDown() override;

    /// Loads the module with the state that it has in a new process, and sends the requests there. Unloads
    /// the module loaded before. Streams that it left open are closed where the system would otherwise not
    /// let anyone delete their files.
    void LoadAnotherModule();

    /// Sends Init and Open of queue Q1 of queue manager QM1, which must succeed, with further keywords.
    void InitAndOpen(const std::string& keywords = "");
    /// These do the same with a trace of that level in trace.txt, and skip what Init wrote there.
    void InitTraced(int level, const std::string& keywords = "");
    void InitAndOpenTraced(int level, const std::string& keywords = "");
    /// Reads until a request does not return pmrcOK, but at most `limit` records.
    std::vector<std::string> ReadAll(std::size_t limit = 1000);

    TemporaryDirectory directory;
    MqiDouble mq;
    TraceReader trace;  ///< reads trace.txt, which InitTraced begins
    platform::LibraryHandle module = nullptr;

  private:
    void UnloadModule();
};

/// Every valid Init needs these keywords.
inline constexpr char kRequired[] = "-QMGR QM1 -QNM Q1";
