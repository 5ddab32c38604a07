// SPDX-License-Identifier: Apache-2.0

// Reads and writes whole files in binary, and makes a directory of its own for a test.
#pragma once

#include <filesystem>
#include <string>

/// Returns the bytes of the file. If the file cannot be read, the test fails and the result is empty.
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& bytes);
bool FileExists(const std::string& path);

/// Returns a path that CMake wrote into the test as a program on the system under test must spell it: Wine shows '/' as
/// drive Z.
std::string PathOnSystem(const std::string& path);

/// A fresh empty directory, which is the current one while the object lives. At the end it is removed with
/// all that is in it.
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
