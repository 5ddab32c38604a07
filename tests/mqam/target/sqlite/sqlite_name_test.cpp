// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/sqlite/sqlite_name.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace mqam;

namespace {

using testing::HasSubstr;

struct NameRow {
    const char* target;
    const char* file;
    const char* table;
};

TEST(SqliteNameTest, FileAndTableAreTakenApart) {
    constexpr NameRow kRows[] = {
        {"sqlite:orders.db", "orders.db", "records"},
        {"sqlite:orders.db?table=orders", "orders.db", "orders"},
        {"sqlite:/a path/with blanks.db?table=Orders_2", "/a path/with blanks.db", "Orders_2"},
        {"sqlite:C:\\data\\o.db?table=t", "C:\\data\\o.db", "t"},
        {"sqlite:a:b.db", "a:b.db", "records"},
        {"sqlite:x?table=2", "x", "2"},
    };
    for (const NameRow& row : kRows) {
        SqliteName name;
        EXPECT_EQ(ParseSqliteName(row.target, name).Error(), "") << row.target;
        EXPECT_EQ(name.file, row.file) << row.target;
        EXPECT_EQ(name.table, row.table) << row.target;
    }
}

TEST(SqliteNameTest, EveryWayToWriteOneTableHasOneForm) {
    EXPECT_EQ(LowerCase("Orders_AZ09"), "orders_az09");
    EXPECT_EQ(LowerCase(""), "");
}

struct BadRow {
    const char* target;
    const char* error;
};

TEST(SqliteNameTest, WhatCannotBeMeantIsRefusedWithTheReason) {
    constexpr BadRow kRows[] = {
        {"sqlite:", "names no database"},
        {"sqlite:?table=t", "names no database"},
        {"sqlite:x?", "'' is not known after the database"},
        {"sqlite:x?mode=ro", "'mode=ro' is not known after the database"},
        {"sqlite:x?Table=t", "'Table=t' is not known after the database"},
        {"sqlite:x?table=", "'' cannot be the table"},
        {"sqlite:x?table=a b", "'a b' cannot be the table"},
        {"sqlite:x?table=a\"; DROP TABLE b", "cannot be the table"},
        {"sqlite:x?table=a'b", "cannot be the table"},
        {"sqlite:x?table=a&mode=ro", "cannot be the table"},
        {"sqlite:x?table=\xC3\xA4", "cannot be the table"},
        {"sqlite:x?table=sqlite_master", "'sqlite_master' cannot be the table"},
        {"sqlite:x?table=SQLite_master", "'SQLite_master' cannot be the table"},
        {"sqlite:x?table=mqam_restart", "'mqam_restart' cannot be the table"},
        {"sqlite:x?table=MQAM_Restart", "'MQAM_Restart' cannot be the table"},
    };
    for (const BadRow& row : kRows) {
        SqliteName name;
        const Status refused = ParseSqliteName(row.target, name);
        EXPECT_EQ(refused.Code(), StatusCode::kRefused) << row.target;
        EXPECT_THAT(refused.Error(), HasSubstr(row.error)) << row.target;
    }
}

}  // namespace
