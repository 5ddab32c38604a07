// SPDX-License-Identifier: Apache-2.0
#include "platform/library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/module_fixture.h"

namespace {

using testing::AnyOf;

TEST(Library, IsNamedAsTheSystemNamesIt) {
    EXPECT_THAT(platform::LibraryFileName("name"), AnyOf("libname.so", "name.dll"));
}

TEST(Library, HasTheFunctionsThatItExports) {
    std::string error;
    const platform::LibraryHandle library = platform::OpenLibrary(MqDoublePath(), error);
    ASSERT_NE(library, nullptr) << error;
    EXPECT_EQ(error, "");
    EXPECT_NE(platform::FindFunction(library, "SetMqDouble"), nullptr);
    EXPECT_EQ(platform::FindFunction(library, "NoSuchFunction"), nullptr);
    EXPECT_TRUE(platform::CloseLibrary(library, MqDoublePath()));
}

TEST(Library, StaysLoadedWhileItIsOpenElsewhere) {
    std::string error;
    const platform::LibraryHandle first = platform::OpenLibrary(MqDoublePath(), error);
    const platform::LibraryHandle second = platform::OpenLibrary(MqDoublePath(), error);
    ASSERT_NE(first, nullptr) << error;
    EXPECT_EQ(first, second);
    EXPECT_FALSE(platform::CloseLibrary(first, MqDoublePath()));
    EXPECT_TRUE(platform::CloseLibrary(second, MqDoublePath()));
}

TEST(Library, ThatIsMissingIsAnError) {
    std::string error;
    EXPECT_EQ(platform::OpenLibrary("no_such_library", error), nullptr);
    EXPECT_NE(error, "");
}

}  // namespace
