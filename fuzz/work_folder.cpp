// SPDX-License-Identifier: Apache-2.0
#include "fuzz/work_folder.h"

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

struct Folders {
    std::string path;  // the work directory
    int work = -1;
    int started = -1;  // where the process was started
};
Folders folders;

std::string ParentFolder() {
    if (const char* parent = std::getenv("TMPDIR")) return parent;
    return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
}

bool IsDots(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

// Takes ownership of the directory's descriptor.
void Empty(int folder) {
    DIR* entries = fdopendir(folder);
    if (entries == nullptr) ReportFinding("the work folder can be listed");
    while (const dirent* entry = readdir(entries)) {
        if (IsDots(entry->d_name) || unlinkat(folder, entry->d_name, 0) == 0) continue;
        Empty(openat(folder, entry->d_name, O_RDONLY | O_DIRECTORY));
        (void)unlinkat(folder, entry->d_name, AT_REMOVEDIR);
    }
    (void)closedir(entries);
}

void RemoveWorkFolder() {
    Empty(openat(folders.work, ".", O_RDONLY | O_DIRECTORY));
    (void)rmdir(folders.path.c_str());
}

bool EndsWord(char c) {
    return c == '\0' || std::strchr(" \n\t\r\f", c) != nullptr;
}

}  // namespace

void MakeWorkFolder() {
    folders.path = ParentFolder() + "/mqamod-fuzz.XXXXXX";
    Require(mkdtemp(folders.path.data()) != nullptr, "the work folder can be made");
    folders.work = open(folders.path.c_str(), O_RDONLY | O_DIRECTORY);
    folders.started = open(".", O_RDONLY | O_DIRECTORY);
    Require(folders.work != -1 && folders.started != -1, "the work folder can be opened");
    (void)std::atexit(RemoveWorkFolder);
}

void EnterWorkFolder() {
    Require(fchdir(folders.work) == 0, "the work folder can be entered");
}

void LeaveWorkFolder() {
    Empty(openat(folders.work, ".", O_RDONLY | O_DIRECTORY));
    Require(fchdir(folders.started) == 0, "the work folder can be left");
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
            "a file of the work folder can be written");
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
