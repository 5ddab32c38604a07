// SPDX-License-Identifier: Apache-2.0

// Reads and writes whole files in binary, and makes a directory of its own for a test.
#pragma once

#include <filesystem>
#include <string>

/// Returns the bytes of the file. If the file cannot be read, the test fails and the result is empty.
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& bytes);
bool FileExists(const std::string& path);

/// Converts a path that CMake compiled into the test into the form that the system under test needs: under
/// Wine, '/' is drive Z.
std::string PathOnSystem(const std::string& path);

/// A new, empty directory, which is the current directory while the object lives. The destructor removes it
/// with everything in it.
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
