// SPDX-License-Identifier: Apache-2.0

// Reads the journal of a checkpoint file, and restores the checkpoint file from it.
#pragma once

#include <cstdint>
#include <string>

namespace mqjournal {

enum class JournalShape {
    kMissing,
    kUnreadable,  ///< it exists but cannot be opened, or not read to its end: see error
    kDamaged,     ///< as no loss of power leaves it: see error
    kIntact,      ///< every commit is complete, except perhaps the last one
};

struct JournalScan {
    JournalShape shape = JournalShape::kMissing;
    std::uint64_t contentBytes =
        0;              ///< of the checkpoint file, saved by complete commits. 0: nothing was committed
    std::string error;  ///< with kUnreadable and kDamaged, a sentence that names the journal
};

/// Scans the journal of a checkpoint file.
[[nodiscard]] JournalScan ScanJournal(const std::string& checkpointPath);

/// Returns whether the checkpoint file has exactly the content of its journal. It returns false also if either cannot
/// be read.
[[nodiscard]] bool IsContentOfJournal(const std::string& checkpointPath, const JournalScan& journal);

/// Writes the content of the journal of `checkpointPath` to a new file at `path`, which is replaced if it exists. The
/// file is not synced: while there is a journal, it can be written again. Returns false with a sentence that names the
/// file; the new file may then be incomplete.
[[nodiscard]] bool CopyContent(const std::string& checkpointPath, const JournalScan& journal,
                               const std::string& path, std::string& error);

}  // namespace mqjournal
