// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <set>

#include "mqam/target/file/file_kind.h"
#include "mqam/target/sqlite/sqlite_kind.h"
#include "mqam/target/target_kind.h"

using namespace mqam;

namespace {

TEST(TargetKinds, OnlyTheSchemeMakesATargetADatabase) {
    EXPECT_EQ(&FindTargetKind("sqlite:orders.db"), &kSqliteTargetKind);
    EXPECT_EQ(&FindTargetKind("sqlite:"), &kSqliteTargetKind);
    EXPECT_EQ(&FindTargetKind("sqlite"), &kFileTargetKind);
    EXPECT_EQ(&FindTargetKind("orders.sqlite"), &kFileTargetKind);
    EXPECT_EQ(&FindTargetKind("SQLITE:orders.db"), &kFileTargetKind);
    EXPECT_EQ(&FindTargetKind("-"), &kFileTargetKind);
}

TEST(TargetKinds, EveryRowIsCompleteAndNoPrefixHidesAnother) {
    std::set<std::string> prefixes;
    for (const TargetKind* kind : AllTargetKinds()) {
        EXPECT_TRUE(prefixes.insert(kind->prefix).second) << kind->prefix;
        EXPECT_EQ(&FindTargetKind(std::string(kind->prefix) + "x"), kind) << kind->prefix;
        EXPECT_STRNE(kind->usage, "");
        EXPECT_STRNE(kind->help, "");
        EXPECT_STRNE(kind->stateNoun, "");
        EXPECT_NE(kind->checkOptions, nullptr);
        EXPECT_NE(kind->make, nullptr);
        EXPECT_NE(kind->readState, nullptr);
    }
    EXPECT_STREQ(AllTargetKinds().back()->prefix, "");
}

TEST(TargetKinds, OptionsThatDoNotGoWithAKindAreRefused) {
    TargetRequest request;
    request.name = "-";
    EXPECT_EQ(FindTargetKind("-").checkOptions(request).Code(), StatusCode::kRefused);
    request.name = "sqlite:a.db";
    EXPECT_TRUE(kSqliteTargetKind.checkOptions(request).IsOk());
    request.formatGiven = true;
    EXPECT_EQ(kSqliteTargetKind.checkOptions(request).Code(), StatusCode::kRefused);
    request.formatGiven = false;
    request.restartFile = "a.restart";
    EXPECT_EQ(kSqliteTargetKind.checkOptions(request).Code(), StatusCode::kRefused);
}

}  // namespace
