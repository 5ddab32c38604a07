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
        // Tests run in several processes at once. If two of them read the same time, the address of a local
        // variable, which differs from process to process, distinguishes them.
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
