// SPDX-License-Identifier: Apache-2.0

// Tests what the libraries export.
#include <gtest/gtest.h>

#include "tests/spoolmq/support/mq_client.h"

namespace {

// Lists the verbs that the libraries must export, among them all that IBM's Node.js binding looks up.
const char* const kVerbs[] = {"MQCONN",  "MQCONNX", "MQDISC",  "MQOPEN",  "MQCLOSE", "MQPUT1",  "MQPUT",
                              "MQGET",   "MQINQ",   "MQSET",   "MQBEGIN", "MQCMIT",  "MQBACK",  "MQSTAT",
                              "MQCB",    "MQCTL",   "MQSUB",   "MQSUBRQ", "MQCRTMH", "MQDLTMH", "MQSETMP",
                              "MQDLTMP", "MQINQMP", "MQBUFMH", "MQMHBUF"};

class LibraryTest : public testing::TestWithParam<bool> {};

TEST_P(LibraryTest, ExportsEveryVerb) {
    for (const char* verb : kVerbs) {
        EXPECT_NE(nullptr, FindVerb(MqLibraryPath(GetParam()), verb)) << verb;
    }
    EXPECT_EQ(nullptr, FindVerb(MqLibraryPath(GetParam()), "MQNOTHING"));
}

TEST_P(LibraryTest, UnsupportedVerbsAre2298) {
    const std::string library = MqLibraryPath(GetParam());
    Codes codes;
    MQLONG* const cc = &codes.compCode;
    MQLONG* const rc = &codes.reason;
    const auto verb = [&](const char* name) {
        codes = Codes{};
        return FindVerb(library, name);
    };
    const Codes expected = FailedWith(mqi::MQRC_FUNCTION_NOT_SUPPORTED);
    using P = void*;
    using L = MQLONG;
    using H = mqi::MQHMSG;
    reinterpret_cast<void (*)(L, P, L*, L*)>(verb("MQBEGIN"))(1, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, L, L, P, L, P, L, P, L*, L*)>(verb("MQSET"))(1, 2, 0, nullptr, 0, nullptr, 0,
                                                                              nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, L, P, L*, L*)>(verb("MQSTAT"))(1, 0, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, L, P, L, P, P, L*, L*)>(verb("MQCB"))(1, 0, nullptr, 2, nullptr, nullptr, cc,
                                                                       rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, L, P, L*, L*)>(verb("MQCTL"))(1, 0, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, P, P, P, L*, L*)>(verb("MQSUB"))(1, nullptr, nullptr, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, L, L, P, L*, L*)>(verb("MQSUBRQ"))(1, 2, 0, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, P, P, L*, L*)>(verb("MQCRTMH"))(1, nullptr, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, P, P, L*, L*)>(verb("MQDLTMH"))(1, nullptr, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, H, P, P, P, L, L, P, L*, L*)>(verb("MQSETMP"))(
        1, 0, nullptr, nullptr, nullptr, 0, 0, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, H, P, P, L*, L*)>(verb("MQDLTMP"))(1, 0, nullptr, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, H, P, P, P, P, L, P, P, L*, L*)>(verb("MQINQMP"))(
        1, 0, nullptr, nullptr, nullptr, nullptr, 0, nullptr, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, H, P, P, L, P, P, L*, L*)>(verb("MQBUFMH"))(1, 0, nullptr, nullptr, 0,
                                                                             nullptr, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
    reinterpret_cast<void (*)(L, H, P, P, P, L, P, P, L*, L*)>(verb("MQMHBUF"))(
        1, 0, nullptr, nullptr, nullptr, 0, nullptr, nullptr, cc, rc);
    EXPECT_EQ(expected, codes);
}

INSTANTIATE_TEST_SUITE_P(BothNames, LibraryTest, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "mqic" : "mqm"; });

}  // namespace
