// SPDX-License-Identifier: Apache-2.0

// Writes the journal of a checkpoint file. When a call succeeds, what it has written is on the disk. Every
// call that fails returns false with a sentence in `error` that names the file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace mqjournal {

/// Copies a checkpoint file into its journal, piece by piece, while the module appends to it. One writer
/// lasts as long as one connection to the queue manager.
class JournalWriter {
  public:
    explicit JournalWriter(std::string checkpointPath);
    JournalWriter(const JournalWriter&) = delete;
    JournalWriter& operator=(const JournalWriter&) = delete;
    ~JournalWriter();

    /// Saves what the checkpoint file has gained since the last call. The first call, and one that finds
    /// another file or another checkpoint than the last one, saves the whole file as a new journal, which
    /// then replaces the old one. Fails if the checkpoint file is missing or has no sequence number.
    [[nodiscard]] bool Save(std::string& error);

    /// Closes the journal, which no one can delete or replace on Windows while it is open. The next Save
    /// begins a new one.
    void Release();

  private:
    [[nodiscard]] bool SaveWholeFile(std::FILE* checkpoint, std::uint64_t bytes, std::string& error);
    [[nodiscard]] bool AppendCommit(int descriptor, std::FILE* checkpoint, std::uint64_t bytes,
                                    std::string& error);
    [[nodiscard]] bool IsContinued(std::uint64_t identity, std::uint32_t sequence, std::uint64_t bytes) const;

    std::string checkpointPath_;
    std::string journalPath_;
    int descriptor_ = -1;  ///< the open journal; -1 if the next Save begins a new one
    std::uint64_t salt_ = 0;
    std::uint64_t journalBytes_ = 0;
    std::uint64_t commit_ = 0;      ///< the number of the last commit
    std::uint64_t savedBytes_ = 0;  ///< how much of the checkpoint file is in the journal
    std::uint64_t identity_ = 0;    ///< the identity of the checkpoint file
    std::uint32_t sequence_ = 0;    ///< the sequence number of the checkpoint
    std::vector<char> piece_;
};

/// Replaces the journal of a checkpoint file with an empty one, or creates it. An empty journal means that
/// nothing was committed for which the checkpoint file is needed. The name of the journal's directory is
/// synced as well.
[[nodiscard]] bool ResetJournal(const std::string& checkpointPath, std::string& error);

/// Deletes the journal of a checkpoint file, if there is one.
[[nodiscard]] bool RemoveJournal(const std::string& checkpointPath, std::string& error);

}  // namespace mqjournal
