// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/attempt_journal.h"

#include <cerrno>
#include <cstring>

#include "mqam/base/progress.h"
#include "mqam/checkpoint/damage.h"
#include "mqam/module/module_session.h"
#include "mqjournal/journal/format.h"
#include "mqjournal/journal/writer.h"
#include "platform/durable_file.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/library.h"
#include "platform/paths.h"

namespace mqam {

namespace {

using mqjournal::JournalShape;

std::string RestoredPath(const std::string& checkpointPath) {
    return checkpointPath + ".restored";
}

Status FailJournal(const std::string& error) {
    return Status::Transient("the journal of the checkpoint file cannot be written: " + error +
                             "; make that possible and run the same command again");
}

// Whether the file is as a crash of the process, and not of the system, leaves it.
bool IsInOrder(const CheckpointScan& file) {
    const bool hasContent =
        file.shape == CheckpointShape::kHeaderOnly || file.shape == CheckpointShape::kRecords;
    return hasContent && file.intactBytes == file.fileBytes && !IsDamaged(file);
}

// Without a journal only a rewrite makes temporary files, and it may then have the only copies of many records. With
// one it has at most the last record loaded.
Status DropTemporaries(const std::string& checkpointPath) {
    for (const std::string& path : FindTemporaryFiles(checkpointPath)) {
        if (ScanCheckpointFile(path, kLargestRecordBytes).records.size() > 1) continue;
        if (platform::RemoveFile(path) != platform::FileStatus::kOk) {
            return Status::Transient(path + " cannot be deleted: " + platform::LastFileError() +
                                     "; make that possible and run the same command again");
        }
    }
    return {};
}

Status SyncCheckpointFile(const std::string& path) {
    const int descriptor = platform::OpenForWriting(path, platform::OpenMode::kAppend);
    const bool isSynced = descriptor >= 0 && platform::SyncFile(descriptor) == 0;
    std::string error = isSynced ? "" : std::strerror(errno);
    if (descriptor >= 0) (void)platform::CloseDescriptor(descriptor);
    if (isSynced && platform::SyncParentDirectory(path, error)) return {};
    return Status::Transient(path + " cannot be synced: " + error +
                             "; make that possible and run the same command again");
}

}  // namespace

Status RefuseStrayContent(const std::string& checkpointPath) {
    const std::string path = mqjournal::JournalPath(checkpointPath);
    return Status::Refused(
        path +
        " contains records, possibly the only copies, but no position is stored: it belongs to another load, or the "
        "restart information of this load is gone; restore that and run the same command again, or name another "
        "checkpoint file (`mqam checkpoint show " +
        checkpointPath + "` shows what the checkpoint file contains)");
}

Status ReadStoredJournal(const std::string& checkpointPath, bool hasPosition, std::uint64_t maxRecordBytes,
                         StoredJournal& stored) {
    stored.journal = mqjournal::ScanJournal(checkpointPath);
    switch (stored.journal.shape) {
        case JournalShape::kMissing: return {};
        case JournalShape::kUnreadable:
            return Status::Transient(
                "the journal of the checkpoint file cannot be read: " + stored.journal.error +
                "; make it readable and run the same command again");
        case JournalShape::kDamaged:
            return Status::Refused(
                "the journal of the checkpoint file is damaged: " + stored.journal.error +
                "; restore an undamaged copy of it and run the same command again. If there is none, look at " +
                checkpointPath +
                " with `mqam checkpoint verify`; if that is intact, delete the journal and run the "
                "same command again");
        case JournalShape::kIntact: break;
    }
    if (!hasPosition) return {};
    std::string scanned = checkpointPath;
    if (!mqjournal::IsContentOfJournal(checkpointPath, stored.journal)) {
        stored.restored = scanned = RestoredPath(checkpointPath);
        std::string error;
        if (!mqjournal::CopyContent(checkpointPath, stored.journal, scanned, error)) {
            return Status::Transient("the checkpoint file cannot be restored from its journal: " + error +
                                     "; make that possible and run the same command again");
        }
    }
    stored.content = ScanCheckpointFile(scanned, maxRecordBytes);
    const CheckpointScan file = ScanCheckpointFile(checkpointPath, maxRecordBytes);
    if (file.shape == CheckpointShape::kUnreadable) {
        return Status::Transient(checkpointPath + " cannot be read: " + file.error +
                                 "; make it readable and run the same command again");
    }
    stored.content->path = checkpointPath;
    return {};
}

Status RestoreFromJournal(const std::string& checkpointPath, const StoredJournal& stored,
                          const std::function<void(const std::string&)>& repaired) {
    if (!stored.content) return {};
    if (!stored.restored.empty()) {
        const bool isInOrder = IsInOrder(ScanCheckpointFile(checkpointPath, kLargestRecordBytes));
        std::string error;
        if (!platform::MoveOverDurably(stored.restored, checkpointPath, error)) {
            return Status::Transient(checkpointPath + " cannot be replaced: " + error +
                                     "; make that possible and run the same command again");
        }
        if (!isInOrder && stored.journal.contentBytes > 0 && repaired) {
            repaired("restore " + checkpointPath + " from its journal");
        }
    }
    return DropTemporaries(checkpointPath);
}

Status PrepareJournal(const std::string& checkpointPath, const StoredJournal& stored, StartAction action,
                      Durability durability) {
    const bool exists = stored.journal.shape == JournalShape::kIntact;
    std::string error;
    if (durability == Durability::kProcess) {
        if (!exists) return {};
        // Only now does the content of the journal exist nowhere else.
        Status synced = stored.content ? SyncCheckpointFile(checkpointPath) : Status();
        if (!synced.IsOk() || mqjournal::RemoveJournal(checkpointPath, error)) return synced;
        return FailJournal(error);
    }
    if (action != StartAction::kReplay) {
        // The numbers of checkpoints begin again, so an older journal would be mistaken for a newer one.
        const bool isEmpty = exists && stored.journal.contentBytes == 0;
        return isEmpty || mqjournal::ResetJournal(checkpointPath, error) ? Status() : FailJournal(error);
    }
    if (exists) return {};
    // The previous attempt had no journal. What it left in the file is committed, or may be.
    mqjournal::JournalWriter writer(checkpointPath);
    return writer.Save(error) ? Status() : FailJournal(error);
}

std::vector<std::string> FilesOfJournal(const std::string& checkpointPath) {
    return {mqjournal::JournalPath(checkpointPath), mqjournal::JournalScratchPath(checkpointPath),
            RestoredPath(checkpointPath)};
}

std::string FindJournalLibrary() {
    return FindLibraryOfProgram(platform::ProgramDirectory(), "mqamjournal");
}

void UseJournalLibrary(const std::string& library, const std::string& checkpointPath) {
    platform::SetEnvironment("MQAMJOURNAL_MQ_LIBRARY", platform::ReadEnvironment("MQAMOD_MQ_LIBRARY"));
    platform::SetEnvironment("MQAMJOURNAL_CHECKPOINT", checkpointPath);
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", library);
}

std::string LastJournalError(const std::string& library) {
    std::string error;
    const platform::LibraryHandle handle = platform::OpenLibrary(library, error);
    if (handle == nullptr) return "";
    const auto lastError =
        reinterpret_cast<const char* (*)()>(platform::FindFunction(handle, "MqamJournalError"));
    return lastError != nullptr ? lastError() : "";
}

}  // namespace mqam
