// SPDX-License-Identifier: Apache-2.0

// Tests which MQ library is bound at the first connect, where it is looked for, and what a host sees without
// one.
#include <gmock/gmock.h>

#include <filesystem>

#include "platform/environment.h"
#include "platform/library.h"
#include "tests/support/expected_report.h"
#include "tests/support/import_patch.h"
#include "tests/support/module_fixture.h"

using testing::HasSubstr;

namespace {

ExpectedError BindingError(int reason) {
    return {"PIDMMain", "Error received from MQCONNX : " + std::to_string(reason)};
}

class BindingTest : public ModuleFixture {
  protected:
    /// Returns the warnings that were traced since the trace was last read.
    std::vector<std::string> NewWarnings() {
        std::vector<std::string> warnings;
        for (const std::string& line : trace.NewLines()) {
            if (line.find("(!warning!): ") != std::string::npos) warnings.push_back(line);
        }
        return warnings;
    }
};

TEST_F(BindingTest, MissingLibraryIsReason2495AndOneWarningNamesIt) {
    InitTraced(1);
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", "no_such_library");
    EXPECT_TRUE(FailsWith(Open(), BindingError(2495)));
    const std::vector<std::string> warnings = NewWarnings();
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_THAT(warnings[0], HasSubstr("no_such_library"));
}

TEST_F(BindingTest, FileThatIsNoLibraryIsReason2495AndOneWarningNamesIt) {
    InitTraced(1);
    WriteFile("not_a_library.so", "text");
    const std::string path = (std::filesystem::current_path() / "not_a_library.so").string();
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", path);
    EXPECT_TRUE(FailsWith(Open(), BindingError(2495)));
    const std::vector<std::string> warnings = NewWarnings();
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_THAT(warnings[0], HasSubstr(path));
}

TEST_F(BindingTest, LibraryWithoutAVerbIsReason2497AndOneWarningNamesBoth) {
    InitTraced(1);
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", MqDoubleWithoutMqbackPath());
    EXPECT_TRUE(FailsWith(Open(), BindingError(2497)));
    const std::vector<std::string> warnings = NewWarnings();
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_THAT(warnings[0], HasSubstr(MqDoubleWithoutMqbackPath()));
    EXPECT_THAT(warnings[0], HasSubstr("MQBACK"));
}

// The functions below replace the routines of the loader that the module calls.
void* (*findSymbol)(void* library, const char* name);
std::string missingVerb;
std::string libraryThere;  // the only name or path that can be loaded

void* FindAllButOne(void* library, const char* name) {
    return name == missingVerb ? nullptr : findSymbol(library, name);
}

void* LoadThatOne(const char* path) {
    std::string reason;
    return path == libraryThere ? platform::OpenLibrary(MqDoublePath(), reason) : nullptr;
}
void* LoadPosix(const char* path, int) {
    return LoadThatOne(path);
}
const char* NoReason() {
    return "not there";
}
void* LoadWindows(const char* path, void*, unsigned) {
    return LoadThatOne(path);
}
unsigned ModuleNotFound() {
    return 126;
}

TEST_F(BindingTest, EachVerbIsNeeded) {
    const ImportPatch patch(module, {"dlsym", "GetProcAddress"}, reinterpret_cast<void*>(&FindAllButOne));
    ASSERT_TRUE(patch.Found());
    findSymbol = reinterpret_cast<decltype(findSymbol)>(patch.Original());
    InitTraced(1);
    for (const char* verb : {"MQCONNX", "MQDISC", "MQOPEN", "MQCLOSE", "MQGET", "MQCMIT", "MQBACK"}) {
        missingVerb = verb;
        EXPECT_TRUE(FailsWith(Open(), BindingError(2497))) << verb;
        const std::vector<std::string> warnings = NewWarnings();
        ASSERT_EQ(warnings.size(), 1U) << verb;
        EXPECT_THAT(warnings[0], HasSubstr("entry point " + missingVerb + " missing"));
    }
    missingVerb.clear();
    EXPECT_EQ(Open().returnCode, pmrcOK);
}

TEST_F(BindingTest, FailsInTheSameWayWithoutATrace) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", "no_such_library");
    EXPECT_TRUE(FailsWith(Open(), BindingError(2495)));
    EXPECT_TRUE(FailsWith(Read(), ExpectedError("PIDMMain",
                                                "MQA0160: <Read failed.  Queue not open.  QMName = QM1. "
                                                "QName = Q1.>")));
    EXPECT_EQ(Shut().returnCode, pmrcOK);
}

TEST_F(BindingTest, EachFailingConnectLooksAgainAndWarnsOnce) {
    InitTraced(1);
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", "no_such_library");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Open().returnCode, pmrcFailure);
        EXPECT_EQ(NewWarnings().size(), 1U);
    }
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", MqDoublePath());
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_THAT(NewWarnings(), testing::IsEmpty());
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN");
}

TEST_F(BindingTest, OnceBoundTheLibraryIsKept) {
    InitAndOpen();
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", "no_such_library");
    InitAndOpen();
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN CLOSE DISC CONNX OPEN");
}

/// Replaces the loader, so that it finds only one library, under only one name or path.
class LoaderTest : public BindingTest {
  protected:
    void TearDown() override {
        patches_.clear();
        BindingTest::TearDown();
    }
    /// Loads a module that has not bound a library yet.
    void StartWithLibrary(const std::string& path) {
        patches_.clear();
        LoadAnotherModule();
        platform::SetEnvironment("MQAMOD_MQ_LIBRARY", "");
        libraryThere = path;
        if (kPathDelimiter == '/') {
            Replace("dlopen", &LoadPosix);
            Replace("dlerror", &NoReason);
        } else {
            Replace("LoadLibraryExA", &LoadWindows);
            Replace("GetLastError", &ModuleNotFound);
        }
    }
    // Returns "'PATH' (REASON)", the form in which the warning lists a library that was not found.
    static std::string NotFound(const std::string& path) {
        return "'" + path + "' (" +
               (kPathDelimiter == '/' ? std::string("not there") : path + ": Windows error 126") + ")";
    }

    const std::vector<std::string> names_ = kPathDelimiter == '/'
                                                ? std::vector<std::string>{"libmqm_r.so", "libmqic_r.so"}
                                                : std::vector<std::string>{"mqm.dll", "mqic.dll"};
    const std::string folder_ =
        kPathDelimiter == '/' ? "/opt/mqm/lib64/" : "C:\\Program Files\\IBM\\MQ\\bin64\\";

  private:
    template <typename Function>
    void Replace(const char* name, Function* replacement) {
        patches_.push_back(std::make_unique<ImportPatch>(module, std::initializer_list<const char*>{name},
                                                         reinterpret_cast<void*>(replacement)));
        ASSERT_TRUE(patches_.back()->Found()) << name;
    }

    std::vector<std::unique_ptr<ImportPatch>> patches_;
};

TEST_F(LoaderTest, EachOfIbmsLibrariesIsBoundByItsNameAndInIbmsDirectory) {
    for (const std::string& name : names_) {
        for (const std::string& path : {name, folder_ + name}) {
            StartWithLibrary(path);
            mq.Forget();
            InitAndOpen();
            EXPECT_EQ(mq.Sequence(), "CONNX OPEN") << path;
        }
    }
}

TEST_F(LoaderTest, TheWarningListsEachLibraryInTheOrderOfTheAttemptsWithItsReason) {
    StartWithLibrary("a library that is never asked for");
    InitTraced(1);
    EXPECT_TRUE(FailsWith(Open(), BindingError(2495)));
    std::string expected = "No MQ library could be bound. Tried " + NotFound(names_[0]);
    for (const std::string& path : {folder_ + names_[0], names_[1], folder_ + names_[1]})
        expected += ", " + NotFound(path);
    const std::vector<std::string> warnings = NewWarnings();
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_THAT(warnings[0], testing::EndsWith("PIDMMain(!warning!): " + expected));
}

TEST_F(LoaderTest, TheWarningForANamedLibraryListsOnlyThatOne) {
    StartWithLibrary("a library that is never asked for");
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", "named");
    InitTraced(1);
    EXPECT_TRUE(FailsWith(Open(), BindingError(2495)));
    const std::vector<std::string> warnings = NewWarnings();
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_THAT(warnings[0], testing::EndsWith("PIDMMain(!warning!): No MQ library could be bound. Tried " +
                                               NotFound("named")));
}

TEST_F(LoaderTest, AnEmptyVariableNamesNoLibrary) {
    StartWithLibrary(names_[0]);
    if (!platform::SetEmptyEnvironment("MQAMOD_MQ_LIBRARY")) GTEST_SKIP() << "here no variable can be empty";
    InitAndOpen();
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN");
}

/// Tests the names of IBM's libraries, which are tried if MQAMOD_MQ_LIBRARY is empty. The warning lists them
/// only on a machine without IBM MQ.
class IbmNamesTest : public BindingTest {
  protected:
    void SetUp() override {
        BindingTest::SetUp();
        for (const char* folder : {"/opt/mqm/lib64", "C:\\Program Files\\IBM\\MQ\\bin64"}) {
            if (FileExists(folder)) GTEST_SKIP() << "IBM MQ is installed in " << folder;
        }
        platform::SetEnvironment("MQAMOD_MQ_LIBRARY", "");
    }

    /// Returns whether the warning of a failing Open names the client library before the server library.
    bool ClientLibraryIsTriedFirst() {
        trace.Skip();
        EXPECT_TRUE(FailsWith(Open(), BindingError(2495)));
        const std::vector<std::string> warnings = NewWarnings();
        EXPECT_EQ(warnings.size(), 1U);
        if (warnings.size() != 1) return false;
        const std::size_t client = warnings[0].find("mqic");
        const std::size_t server = warnings[0].find("mqm");
        EXPECT_NE(client, std::string::npos) << warnings[0];
        EXPECT_NE(server, std::string::npos) << warnings[0];
        return client < server;
    }
};

TEST_F(IbmNamesTest, LocalConnectionTriesTheQueueManagersOwnLibraryFirst) {
    InitTraced(1);
    EXPECT_FALSE(ClientLibraryIsTriedFirst());
}

TEST_F(IbmNamesTest, ChannelAndServerMakeTheClientLibraryFirst) {
    InitTraced(1, "-CHNL C -SRVR s");
    EXPECT_TRUE(ClientLibraryIsTriedFirst());
}

TEST_F(IbmNamesTest, EachClientVariableMakesTheClientLibraryFirst) {
    InitTraced(1);
    for (const char* variable : {"MQSERVER", "MQCHLLIB", "MQCHLTAB", "MQCCDTURL"}) {
        platform::SetEnvironment(variable, "x");
        EXPECT_TRUE(ClientLibraryIsTriedFirst()) << variable;
        platform::SetEnvironment(variable, "");
    }
    EXPECT_FALSE(ClientLibraryIsTriedFirst());
}

}  // namespace
