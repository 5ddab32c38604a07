// SPDX-License-Identifier: Apache-2.0

// Reads the journal of a checkpoint file, and restores the checkpoint file from it.
#pragma once

#include <cstdint>
#include <string>

namespace mqjournal {

enum class JournalShape {
    kMissing,
    kUnreadable,  ///< it exists but cannot be opened or read to its end; `error` says why
    kDamaged,     ///< a loss of power cannot have left it like this; `error` says what is damaged
    kIntact,      ///< every commit is complete, except perhaps the last one
};

struct JournalScan {
    JournalShape shape = JournalShape::kMissing;
    /// The bytes of the checkpoint file that complete commits have saved; 0 if nothing was committed.
    std::uint64_t contentBytes = 0;
    std::string error;  ///< a sentence that names the journal, with kUnreadable and kDamaged
};

/// Scans the journal of a checkpoint file.
[[nodiscard]] JournalScan ScanJournal(const std::string& checkpointPath);

/// Returns whether the checkpoint file has exactly the content of its journal. It also returns false if one
/// of them cannot be read.
[[nodiscard]] bool IsContentOfJournal(const std::string& checkpointPath, const JournalScan& journal);

/// Writes the content of the journal of `checkpointPath` to a new file at `path`, which is replaced if it
/// exists. The file is not synced: while there is a journal, it can be written again. Returns false, with a
/// sentence in `error` that names the new file, if it cannot be written whole.
[[nodiscard]] bool CopyContent(const std::string& checkpointPath, const JournalScan& journal,
                               const std::string& path, std::string& error);

}  // namespace mqjournal
