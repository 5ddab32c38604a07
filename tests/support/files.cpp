// SPDX-License-Identifier: Apache-2.0
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <system_error>

#include "platform/paths.h"
#include "platform/process.h"

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) ADD_FAILURE() << "cannot read " << path;
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << bytes;
    file.close();
    if (!file) ADD_FAILURE() << "cannot write " << path;
}

bool FileExists(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

std::string PathOnSystem(const std::string& path) {
    const std::string native = platform::NativePath(path);
    return native.starts_with('\\') ? "Z:" + native : native;
}

TemporaryDirectory::TemporaryDirectory() : before_(std::filesystem::current_path()) {
    static int made = 0;
    const std::string name =
        "mqamod_test_" + std::to_string(platform::CurrentProcessId()) + "_" + std::to_string(++made);
    path_ = std::filesystem::temp_directory_path() / name;
    std::filesystem::remove_all(path_);  // An earlier process with the same number may have left it.
    std::filesystem::create_directory(path_);
    std::filesystem::current_path(path_);
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
    std::filesystem::remove_all(path_, ignored);
}
