// SPDX-License-Identifier: Apache-2.0

// Simulates a loss of power: what a directory tree can be afterwards, if only what was synced is certain. The contents
// of a file are certain as of its last fsync, and the names in a directory as of the last fsync of the directory.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

/// Says what the disk has of that which was not synced.
enum class PowerCut {
    kNone,       ///< the power does not fail
    kData,       ///< all names; of each file only what was synced
    kZeros,      ///< all names and lengths; zeros where bytes were not synced
    kShort,      ///< all names; of the bytes that were not synced, the first half
    kNames,      ///< only names that were synced; the contents as they are
    kNamesData,  ///< only what was synced
    kMixed,      ///< one of these for each file and each directory, chosen by the seed
};

class SyncedTree {
  public:
    /// Takes the tree in `folder`, without `except`, as synced.
    SyncedTree(std::string folder, std::string except);

    /// Notes that a file or directory of the tree is being synced.
    void NoteSync(const std::string& path);

    /// Makes the tree what it is after a loss of power. No process may use it.
    void Cut(PowerCut cut, std::uint64_t seed);

  private:
    // An inode, and when it was made: its number is used again.
    using Identity = std::pair<std::uint64_t, std::int64_t>;
    struct Entry {
        Identity identity;
        bool isDirectory = false;
    };
    using Names = std::map<std::string, Entry>;

    [[nodiscard]] bool IsExcepted(const std::string& path) const;
    [[nodiscard]] Names NamesIn(const std::string& directory) const;
    void NoteTree(const std::string& directory);
    void CutDirectory(const std::string& directory, const std::string& copy, PowerCut cut,
                      std::uint64_t seed) const;
    [[nodiscard]] std::string ContentsAfter(const Identity& identity, PowerCut cut) const;

    std::string folder_;
    std::string except_;
    std::map<Identity, std::string> contents_;  // of files, as of their last sync
    std::map<Identity, Names> names_;           // in directories, likewise
    std::map<Identity, std::string> now_ = {};  // where each file and directory is at the time of the cut
};
