// SPDX-License-Identifier: Apache-2.0
#include "tests/crash/power_cut.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

namespace {

namespace fs = std::filesystem;

std::string ReadContents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool Identify(const std::string& path, std::pair<std::uint64_t, std::int64_t>& identity, bool& isDirectory) {
    struct statx status = {};
    if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, &status) != 0)
        return false;
    identity = {status.stx_ino, status.stx_btime.tv_sec * 1000000000 + status.stx_btime.tv_nsec};
    isDirectory = S_ISDIR(status.stx_mode);
    return true;
}

// Chooses what is left of one file or directory of a mixture.
PowerCut Choose(const std::string& path, std::uint64_t seed) {
    static constexpr PowerCut kChoices[] = {PowerCut::kNone, PowerCut::kData, PowerCut::kZeros,
                                            PowerCut::kShort};
    return kChoices[std::hash<std::string>{}(path + std::to_string(seed)) % std::size(kChoices)];
}

}  // namespace

SyncedTree::SyncedTree(std::string folder, std::string except)
    : folder_(std::move(folder)), except_(std::move(except)) {
    NoteTree(folder_);
}

bool SyncedTree::IsExcepted(const std::string& path) const {
    return path == except_ || path.starts_with(except_ + "/");
}

SyncedTree::Names SyncedTree::NamesIn(const std::string& directory) const {
    Names names;
    std::error_code ignored;
    for (const fs::directory_entry& item : fs::directory_iterator(directory, ignored)) {
        Entry entry;
        if (IsExcepted(item.path()) || !Identify(item.path(), entry.identity, entry.isDirectory)) continue;
        names[item.path().filename()] = entry;
    }
    return names;
}

void SyncedTree::NoteTree(const std::string& directory) {
    NoteSync(directory);
    for (const auto& [name, entry] : NamesIn(directory)) {
        const std::string path = directory + "/" + name;
        if (entry.isDirectory) {
            NoteTree(path);
        } else {
            NoteSync(path);
        }
    }
}

void SyncedTree::NoteSync(const std::string& path) {
    Entry entry;
    if (IsExcepted(path) || !Identify(path, entry.identity, entry.isDirectory)) return;
    if (entry.isDirectory) {
        names_[entry.identity] = NamesIn(path);
    } else {
        contents_[entry.identity] = ReadContents(path);
    }
}

std::string SyncedTree::ContentsAfter(const Identity& identity, PowerCut cut) const {
    const auto found = contents_.find(identity);
    const std::string synced = found == contents_.end() ? "" : found->second;
    const auto place = now_.find(identity);
    // A file that has no name any more has only its synced contents if its name comes back.
    if (place == now_.end()) return synced;
    std::string now = ReadContents(place->second);
    const auto differs = static_cast<std::size_t>(
        std::mismatch(now.begin(), now.end(), synced.begin(), synced.end()).first - now.begin());
    switch (cut) {
        case PowerCut::kData:
        case PowerCut::kNamesData: return synced;
        case PowerCut::kZeros:
            for (std::size_t i = differs; i < now.size(); ++i) {
                if (i >= synced.size() || now[i] != synced[i]) now[i] = '\0';
            }
            return now;
        case PowerCut::kShort: return now.substr(0, differs + (now.size() - differs) / 2);
        default: return now;
    }
}

// Writes what is left of a directory into `copy`, which exists.
void SyncedTree::CutDirectory(const std::string& directory, const std::string& copy, PowerCut cut,
                              std::uint64_t seed) const {
    Entry self;
    if (!Identify(directory, self.identity, self.isDirectory)) return;
    const auto synced = names_.find(self.identity);
    const PowerCut ofNames = cut == PowerCut::kMixed ? Choose(directory, seed) : cut;
    const bool onlySynced = cut == PowerCut::kMixed ? ofNames == PowerCut::kData
                                                    : cut == PowerCut::kNames || cut == PowerCut::kNamesData;
    const Names names = !onlySynced ? NamesIn(directory) : synced != names_.end() ? synced->second : Names();
    for (const auto& [name, entry] : names) {
        const std::string path = copy + "/" + name;
        if (entry.isDirectory) {
            fs::create_directory(path);
            const auto place = now_.find(entry.identity);
            if (place != now_.end()) CutDirectory(place->second, path, cut, seed);
            continue;
        }
        const PowerCut ofFile = cut == PowerCut::kMixed ? Choose(path, seed) : cut;
        std::ofstream(path, std::ios::binary) << ContentsAfter(entry.identity, ofFile);
    }
}

void SyncedTree::Cut(PowerCut cut, std::uint64_t seed) {
    if (cut == PowerCut::kNone) return;
    for (const fs::directory_entry& item : fs::recursive_directory_iterator(folder_)) {
        Entry entry;
        if (IsExcepted(item.path()) || !Identify(item.path(), entry.identity, entry.isDirectory)) continue;
        now_[entry.identity] = item.path();
    }
    const std::string copy = folder_ + ".after-the-cut";
    fs::create_directory(copy);
    CutDirectory(folder_, copy, cut, seed);
    for (const auto& [name, entry] : NamesIn(folder_))
        fs::remove_all(folder_ + "/" + name);
    for (const fs::directory_entry& item : fs::directory_iterator(copy))
        fs::rename(item.path(), fs::path(folder_) / item.path().filename());
    fs::remove(copy);
}
