// SPDX-License-Identifier: Apache-2.0
#include "fuzz/spool_tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>

#include "fuzz/work_directory.h"

namespace {

namespace fs = std::filesystem;

constexpr char kUnits[] = "root/QM/.units";
constexpr char kDeadUnit[] = "9-1";  // of a process that has ended

// Returns the name of a unit of work that has a directory or, if there is no such unit, the name of one that
// belongs to a process that has ended.
std::string SomeUnit() {
    std::string unit = kDeadUnit;
    DIR* entries = opendir(kUnits);
    if (entries == nullptr) return unit;
    while (const dirent* entry = readdir(entries)) {
        if (entry->d_type == DT_DIR && entry->d_name[0] != '.') unit = entry->d_name;
    }
    (void)closedir(entries);
    return unit;
}

std::string DirectoryOf(std::uint8_t kind) {
    static constexpr const char* kDirectories[] = {
        "root/QM/Q",     "root/QM", "root/QM/Q/.desc", "root/QM/Q/.opens", kUnits,
        "root/QM/OTHER", "root",    "root/QM2"};
    static constexpr const char* kStages[] = {"",       "/got",      "/taking", "/put",   "/done",
                                              "/got/Q", "/taking/Q", "/put/Q",  "/done/Q"};
    if (kind < 160) return kDirectories[kind % std::size(kDirectories)];
    const std::string unit = (kind & 1U) != 0 ? SomeUnit() : kDeadUnit;
    return std::string(kUnits) + '/' + unit + kStages[kind / 2U % std::size(kStages)];
}

// Makes a name of the form YYYYMMDD-HHMMSS-NNNNNNNNN, usually a valid time.
std::string Stamp(ByteReader& input) {
    char text[64];
    const std::uint8_t kind = input.Byte();
    const int year = (kind & 1U) != 0 ? input.Number<std::uint16_t>() % 10000 : 2026;
    (void)std::snprintf(text, sizeof text, "%04d%02d%02d-%02d%02d%02d-%09u", year, kind % 13, kind % 32,
                        kind % 25, kind % 60, kind % 61, static_cast<unsigned>(input.Byte()));
    return text;
}

std::string MessageName(ByteReader& input) {
    static constexpr const char* kEndings[] = {".msg", "~1.msg", "~999999999.msg", ".", "~.msg",
                                               ".tmp", "~0.x"};
    const std::string stamp = Stamp(input);
    return stamp + kEndings[input.Byte() % std::size(kEndings)];
}

std::string RawName(ByteReader& input) {
    std::string name = input.Bytes(input.Byte());
    name = name.substr(0, name.find('\0'));
    DropSlashes(name);
    return name.empty() || name == "." || name == ".." ? "raw" : name;
}

std::string Name(ByteReader& input) {
    static constexpr const char* kNames[] = {"qmgr.ini",
                                             ".queue.ini",
                                             ".state",
                                             "commit",
                                             "open",
                                             "9-1.lock",
                                             "a.txt",
                                             "b.txt",
                                             ".desc",
                                             "Q",
                                             ".units",
                                             ".opens",
                                             "20260131-235959-123456789.msg",
                                             "20260131-235959-123456789~2.msg"};
    const std::uint8_t kind = input.Byte();
    if (kind >= 200) return RawName(input);
    if (kind >= 140) return MessageName(input);
    return kNames[kind % std::size(kNames)];
}

std::string Path(ByteReader& input) {
    const std::string directory = DirectoryOf(input.Byte());
    return directory + '/' + Name(input);
}

// Makes the directories that the path needs, if they can be made.
void MakeParent(const std::string& path) {
    std::error_code error;
    fs::create_directories(fs::path(path).parent_path(), error);
}

void Remove(const std::string& path) {
    std::error_code error;
    fs::remove_all(path, error);
}

// Makes the file look as if it had not changed for a long time. Only then does a file that someone copied in
// become a message.
void LetRest(const std::string& path) {
    const timespec longAgo[] = {{1000000000, 0}, {1000000000, 0}};
    (void)utimensat(AT_FDCWD, path.c_str(), longAgo, 0);
}

}  // namespace

void MakeSpool() {
    (void)mkdir("root", 0700);
    (void)mkdir("root/QM", 0700);
    (void)mkdir("root/QM/Q", 0700);
    (void)setenv("SPOOLMQ_DIR", "root", 1);
}

void MakeSpoolFile(ByteReader& input) {
    const std::string path = Path(input);
    MakeParent(path);
    Remove(path);
    const std::uint8_t length = input.Byte();
    WriteFile(path.c_str(), input.Bytes(length));
    LetRest(path);
}

void MakeSpoolDirectory(ByteReader& input) {
    const std::string path = Path(input);
    MakeParent(path);
    (void)mkdir(path.c_str(), 0700);
}

void MakeSpoolPipe(ByteReader& input) {
    const std::string path = Path(input);
    MakeParent(path);
    Remove(path);
    (void)mkfifo(path.c_str(), 0600);
}

void CutSpoolFile(ByteReader& input) {
    const std::string path = Path(input);
    (void)truncate(path.c_str(), input.Byte());
}

void RemoveSpoolEntry(ByteReader& input) {
    Remove(Path(input));
}

void MoveSpoolEntry(ByteReader& input) {
    const std::string from = Path(input);
    const std::string to = Path(input);
    MakeParent(to);
    (void)std::rename(from.c_str(), to.c_str());
}
