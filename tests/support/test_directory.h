// SPDX-License-Identifier: Apache-2.0

// Makes a directory for one test, which is removed afterwards.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>

class TestDirectory {
  public:
    TestDirectory() {
        // Tests run in processes that start at the same time. The address of a local variable distinguishes
        // two that start at the same moment.
        const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
        const auto place = reinterpret_cast<std::uintptr_t>(&ticks);
        root_ = std::filesystem::temp_directory_path() /
                ("mqam" + std::to_string(ticks) + "-" + std::to_string(place % 1000003));
        std::filesystem::create_directories(root_);
    }
    TestDirectory(const TestDirectory&) = delete;
    TestDirectory& operator=(const TestDirectory&) = delete;
    ~TestDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }

    [[nodiscard]] std::string Root() const { return root_.string(); }
    [[nodiscard]] std::string Path(const std::string& name) const { return (root_ / name).string(); }

  private:
    std::filesystem::path root_;
};
