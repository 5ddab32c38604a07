// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/attributes/attribute_file.h"

#include "platform/clock.h"
#include "platform/file.h"

namespace spoolmq {

namespace {

// Two changes within one tick of the file clock leave the same time. A file that had changed within this time
// before it was read is therefore read again.
constexpr std::int64_t kClockTickNs = 20000000;

bool IsSameFile(const platform::FileInfo& a, const platform::FileInfo& b) {
    return a.identity == b.identity && a.bytes == b.bytes && a.writeTimeNs == b.writeTimeNs &&
           a.changeTimeNs == b.changeTimeNs;
}

template <typename Attributes>
void UseDefaults(AttributeFile<Attributes>& file) {
    if (!file.isRead || file.readFile.identity != 0) {
        file.values = Attributes();
    }
    file.readFile = platform::FileInfo();
    file.isRead = true;
}

template <typename Attributes>
Status Refresh(AttributeFile<Attributes>& file) {
    platform::FileInfo now;
    const FileStatus found = platform::StatPath(file.path, now);
    if (found == FileStatus::kNotFound) {
        UseDefaults(file);
        return {};
    }
    if (found != FileStatus::kOk) {
        return FileError(file.path);
    }
    const bool isSettled = file.readAtNs - now.changeTimeNs > kClockTickNs;
    if (file.isRead && isSettled && IsSameFile(now, file.readFile)) {
        return {};
    }
    std::string text;
    const std::int64_t readAtNs = platform::FileClockNs();
    if (platform::ReadWholeFile(file.path, text) != FileStatus::kOk) {
        return FileError(file.path);
    }
    Status status = ParseAttributes(text, file.values);
    if (!status.IsOk()) {
        status.error = file.path + ", " + status.error;
        return status;
    }
    file.readFile = now;
    file.readAtNs = readAtNs;
    file.isRead = true;
    return {};
}

}  // namespace

Status RefreshAttributes(AttributeFile<QmgrAttributes>& file) {
    return Refresh(file);
}
Status RefreshAttributes(AttributeFile<QueueAttributes>& file) {
    return Refresh(file);
}

}  // namespace spoolmq
