// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/file/file_sink.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace mqam {

namespace {

// One write of this size costs next to nothing compared with the records in it.
constexpr std::size_t kBufferBytes = 262144;
constexpr auto kIdlePause = std::chrono::milliseconds(200);

}  // namespace

const char* NameOf(RecordFormat format) {
    for (const RecordFormatRow& row : kRecordFormats) {
        if (row.format == format) return row.name;
    }
    return "";
}

FileSink::FileSink(FileSinkSettings target)
    : target_(std::move(target)), encoder_({target_.format, target_.newlines}, target_.recordsBefore) {}

FileSink::~FileSink() {
    StopIdleWriter();
    if (descriptor_ >= 0) {
        // Only a load that failed leaves the file open; that failure has been reported.
        static_cast<void>(platform::CloseDescriptor(descriptor_));
    }
}

bool FileSink::Fail(const char* action) {
    const int code = errno;
    status_ =
        Status::Transient(std::string("cannot ") + action + " " + target_.path + ": " + std::strerror(code));
    return false;
}

Status FileSink::Open() {
    descriptor_ =
        target_.descriptor >= 0 ? target_.descriptor : platform::OpenForWriting(target_.path, target_.mode);
    if (descriptor_ < 0) {
        Fail("open");
        return status_;
    }
    buffer_.reserve(kBufferBytes);
    idleWriter_ = std::thread(&FileSink::WriteWhenIdle, this);
    return {};
}

void FileSink::WriteWhenIdle() {
    std::unique_lock<std::mutex> guard(lock_);
    while (!stop_.wait_for(guard, kIdlePause, [this] { return stopping_; })) {
        // The next call reports a failure.
        if (!std::exchange(hasNewRecord_, false) && status_.IsOk()) static_cast<void>(WriteBuffer());
    }
}

void FileSink::StopIdleWriter() {
    if (!idleWriter_.joinable()) return;
    {
        const std::lock_guard<std::mutex> guard(lock_);
        stopping_ = true;
    }
    stop_.notify_all();
    idleWriter_.join();
}

bool FileSink::WriteOut(const char* bytes, std::size_t length) {
    while (length > 0) {
        const long written = platform::WriteBytes(descriptor_, bytes, length);
        if (written <= 0) {
            if (written == 0) errno = ENOSPC;
            return Fail("write to");
        }
        bytes += written;
        length -= static_cast<std::size_t>(written);
        bytesWritten_ += static_cast<std::uint64_t>(written);
        for (; !heldEnds_.empty() && heldEnds_.front() <= bytesWritten_; heldEnds_.pop_front())
            ++recordsWritten_;
    }
    return true;
}

bool FileSink::WriteBuffer() {
    const bool written = WriteOut(buffer_.data(), buffer_.size());
    buffer_.clear();
    return written;
}

bool FileSink::Buffer(const char* bytes, std::size_t length) {
    if (length > kBufferBytes - buffer_.size() && !WriteBuffer()) return false;
    if (length > kBufferBytes) return WriteOut(bytes, length);
    buffer_.insert(buffer_.end(), bytes, bytes + length);
    return true;
}

Status FileSink::Put(const char* record, std::size_t length) {
    const std::lock_guard<std::mutex> guard(lock_);
    if (!status_.IsOk()) return status_;
    hasNewRecord_ = true;
    RecordEncoder::Encoded encoded;
    const Status taken = encoder_.Encode(record, length, encoded);
    if (!taken.IsOk()) {
        // The records before this one belong into the file, whatever happens to the load.
        if (WriteBuffer()) status_ = taken;
        return status_;
    }
    bytesPut_ += encoded.Bytes();
    heldEnds_.push_back(bytesPut_);
    mostRecordsHeld_ = std::max<std::uint64_t>(mostRecordsHeld_, heldEnds_.size());
    for (const std::string_view part : {encoded.before, encoded.body, encoded.after}) {
        if (!Buffer(part.data(), part.size())) return status_;
    }
    return {};
}

bool FileSink::Sync() {
    return platform::SyncFile(descriptor_) == 0 || Fail("sync");
}

Status FileSink::Save() {
    const std::lock_guard<std::mutex> guard(lock_);
    if (!status_.IsOk() || !WriteBuffer() || !Sync()) return status_;
    return {};
}

bool FileSink::HasLength(std::uint64_t bytes) {
    const std::lock_guard<std::mutex> guard(lock_);
    return platform::IsFileAt(descriptor_, target_.path, bytes);
}

std::uint64_t FileSink::BytesPut() {
    const std::lock_guard<std::mutex> guard(lock_);
    return bytesPut_;
}

std::uint64_t FileSink::RecordsWithLineFeeds() {
    const std::lock_guard<std::mutex> guard(lock_);
    return target_.newlines == NewlineRule::kKeep ? encoder_.RecordsWithLineFeeds() : 0;
}

std::uint64_t FileSink::RecordsWritten() {
    const std::lock_guard<std::mutex> guard(lock_);
    return recordsWritten_;
}

std::uint64_t FileSink::MostRecordsHeld() {
    const std::lock_guard<std::mutex> guard(lock_);
    return mostRecordsHeld_;
}

Status FileSink::Finish() {
    StopIdleWriter();
    if (!status_.IsOk() || !WriteBuffer() || !Sync()) return status_;
    const int descriptor = std::exchange(descriptor_, -1);
    if (platform::CloseDescriptor(descriptor) != 0) Fail("close");
    return status_;
}

}  // namespace mqam
