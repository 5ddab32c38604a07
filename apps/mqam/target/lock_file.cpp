// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/lock_file.h"

#include <filesystem>
#include <map>

#include "mqam/base/utc_time.h"
#include "platform/file.h"
#include "platform/lock.h"
#include "platform/process.h"

namespace mqam {

namespace {

constexpr char kLockMark[] = "mqam lock\n";
constexpr char kProcessKey[] = "process=";
constexpr char kHostKey[] = "host=";
constexpr char kStartedKey[] = "started=";

std::string ComposeContents() {
    static const std::string started = UtcNow();
    return std::string(kLockMark) + kProcessKey + std::to_string(platform::CurrentProcessId()) + "\n" +
           kHostKey + platform::HostName() + "\n" + kStartedKey + started + "\n";
}

// Returns the rest of the line that begins with `key`, or an empty string.
std::string FindValue(const std::string& text, const std::string& key) {
    const std::size_t at = text.find("\n" + key);
    if (at == std::string::npos) return "";
    const std::size_t from = at + 1 + key.size();
    const std::size_t end = text.find('\n', from);
    return end == std::string::npos ? "" : text.substr(from, end - from);
}

// Describes the process that holds the lock. It may not have written yet who it is.
std::string DescribeHolder(const std::string& path) {
    std::string text;
    const bool isRead = platform::ReadWholeFile(path, text) == platform::FileStatus::kOk;
    const std::string started = isRead ? FindValue(text, kStartedKey) : "";
    if (started.empty()) return "another process";
    return "process " + FindValue(text, kProcessKey) + " on " + FindValue(text, kHostKey) + ", started " +
           started + ",";
}

// Maps the path of each lock that this process holds to the lock.
std::map<std::string, platform::LockHandle>& HeldLocks() {
    static std::map<std::string, platform::LockHandle> held;
    return held;
}

}  // namespace

Status AcquireLockFile(const std::string& path, int timeoutSeconds) {
    platform::LockOptions options;
    options.timeoutMs = timeoutSeconds * 1000;
    options.contents = ComposeContents();
    options.isPrivate = true;
    platform::LockHandle lock = platform::kNoLock;
    switch (platform::AcquireLock(path, options, lock)) {
        case platform::LockResult::kAcquired: HeldLocks()[path] = lock; return {};
        case platform::LockResult::kHeld:
            return Status::Refused("another load is running: " + DescribeHolder(path) + " holds " + path +
                                   "; wait until it ends, or end it, then run the same command again");
        case platform::LockResult::kNotEmpty:
            return Status::Refused(
                path +
                " is not the lock of a load, because it has other contents, and is left alone; move it away, "
                "then run the same command again");
        case platform::LockResult::kDenied:
        case platform::LockResult::kNotFound:
        case platform::LockResult::kFailed: break;
    }
    return Status::Transient(path + " cannot be created or locked: " + platform::LastFileError() +
                             "; check that its directory exists and that you may write to it");
}

void ReleaseLockFile(const std::string& path) {
    const auto held = HeldLocks().find(path);
    if (held == HeldLocks().end()) return;
    platform::ReleaseLock(path, held->second);
    HeldLocks().erase(held);
}

std::string CheckpointLockPath(const std::string& checkpointFile) {
    const std::filesystem::path directory = std::filesystem::path(checkpointFile).parent_path();
    return (directory / "mqam-checkpoint.lock").string();
}

}  // namespace mqam
