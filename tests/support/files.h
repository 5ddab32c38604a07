// SPDX-License-Identifier: Apache-2.0

// Whole files in binary, and a directory of its own for a test.
#pragma once

#include <filesystem>
#include <string>

/// The bytes of the file; a file that cannot be read fails the test and is empty.
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& bytes);
bool FileExists(const std::string& path);

/// Returns a path that CMake wrote into the test as a program on the system under test must spell it: Wine shows '/' as
/// drive Z.
std::string PathOnSystem(const std::string& path);

/// A fresh empty directory, current while the object lives; removed with all that is in it at the end.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    [[nodiscard]] std::string Path() const { return path_.string(); }

  private:
    std::filesystem::path before_;
    std::filesystem::path path_;
};
