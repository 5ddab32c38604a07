// SPDX-License-Identifier: Apache-2.0
#include "fuzz/work_directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/harness.h"

namespace {

struct Directories {
    std::string path;  // the work directory
    int work = -1;
    int started = -1;  // where the process was started
};
Directories directories;

std::string ParentDirectory() {
    if (const char* parent = std::getenv("TMPDIR")) return parent;
    return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
}

bool IsDots(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

// Deletes everything in the directory and closes its descriptor.
void Empty(int directory) {
    DIR* entries = fdopendir(directory);
    if (entries == nullptr) ReportFinding("the work directory can be listed");
    while (const dirent* entry = readdir(entries)) {
        if (IsDots(entry->d_name) || unlinkat(directory, entry->d_name, 0) == 0) continue;
        Empty(openat(directory, entry->d_name, O_RDONLY | O_DIRECTORY));
        (void)unlinkat(directory, entry->d_name, AT_REMOVEDIR);
    }
    (void)closedir(entries);
}

void RemoveWorkDirectory() {
    Empty(openat(directories.work, ".", O_RDONLY | O_DIRECTORY));
    (void)rmdir(directories.path.c_str());
}

bool EndsWord(char c) {
    return c == '\0' || std::strchr(" \n\t\r\f", c) != nullptr;
}

}  // namespace

void MakeWorkDirectory() {
    directories.path = ParentDirectory() + "/mqamod-fuzz.XXXXXX";
    Require(mkdtemp(directories.path.data()) != nullptr, "the work directory can be made");
    directories.work = open(directories.path.c_str(), O_RDONLY | O_DIRECTORY);
    directories.started = open(".", O_RDONLY | O_DIRECTORY);
    Require(directories.work != -1 && directories.started != -1, "the work directory can be opened");
    (void)std::atexit(RemoveWorkDirectory);
}

void EnterWorkDirectory() {
    Require(fchdir(directories.work) == 0, "the work directory can be entered");
}

void LeaveWorkDirectory() {
    Empty(openat(directories.work, ".", O_RDONLY | O_DIRECTORY));
    Require(fchdir(directories.started) == 0, "the work directory can be left");
}

void ConfinePaths(std::string& text) {
    char before = '\0';
    for (char& c : text) {
        if (c == '/' && EndsWord(before)) c = '_';
        if (c == '.' && before == '.') c = '_';
        before = c;
    }
}

void DropSlashes(std::string& text) {
    std::replace(text.begin(), text.end(), '/', '_');
}

void WriteFile(const char* name, const std::string& bytes) {
    const int file = open(name, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file == -1) return;  // a directory of that name
    Require(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
            "a file of the work directory can be written");
    (void)close(file);
}

std::string ReadFile(const char* name) {
    std::string bytes;
    const int file = open(name, O_RDONLY);
    if (file == -1) return bytes;
    std::array<char, 4096> piece{};
    ssize_t got = 0;
    while ((got = read(file, piece.data(), piece.size())) > 0)
        bytes.append(piece.data(), static_cast<std::size_t>(got));
    (void)close(file);
    return bytes;
}
