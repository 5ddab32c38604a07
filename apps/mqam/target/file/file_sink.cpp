#include "mqam/target/file/file_sink.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <utility>

namespace mqam {

namespace {

// One write of this size costs next to nothing beside the records in it.
constexpr std::size_t kHeldBytesMax = 262144;
constexpr auto kIdlePause = std::chrono::milliseconds(200);

}  // namespace

const char* NameOf(RecordFormat format) {
    for (const RecordFormatRow& row : kRecordFormats) {
        if (row.format == format) return row.name;
    }
    return "";
}

FileSink::FileSink(FileSinkSettings target) : target_(std::move(target)) {}

FileSink::~FileSink() {
    StopIdleWriter();
    if (descriptor_ >= 0) {
        // Only a load that failed leaves the file open; that failure has been told.
        static_cast<void>(platform::CloseDescriptor(descriptor_));
    }
}

bool FileSink::Fail(const char* action) {
    const int code = errno;
    failure_ = std::string("cannot ") + action + " " + target_.path + ": " + std::strerror(code);
    return false;
}

bool FileSink::Open() {
    descriptor_ =
        target_.descriptor >= 0 ? target_.descriptor : platform::OpenForWriting(target_.path, target_.mode);
    if (descriptor_ < 0) return Fail("open");
    held_.reserve(kHeldBytesMax);
    idleWriter_ = std::thread(&FileSink::WriteWhenIdle, this);
    return true;
}

void FileSink::WriteWhenIdle() {
    std::unique_lock<std::mutex> guard(lock_);
    while (!stop_.wait_for(guard, kIdlePause, [this] { return stopping_; })) {
        // A failure shows at the next call.
        if (!std::exchange(recordCame_, false) && failure_.empty()) static_cast<void>(WriteHeld());
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
    }
    return true;
}

bool FileSink::WriteHeld() {
    const bool written = WriteOut(held_.data(), held_.size());
    held_.clear();
    return written;
}

bool FileSink::Hold(const char* bytes, std::size_t length) {
    if (length > kHeldBytesMax - held_.size() && !WriteHeld()) return false;
    if (length > kHeldBytesMax) return WriteOut(bytes, length);
    held_.insert(held_.end(), bytes, bytes + length);
    return true;
}

bool FileSink::Put(const char* record, std::size_t length) {
    const std::lock_guard<std::mutex> guard(lock_);
    if (!failure_.empty()) return false;
    recordCame_ = true;
    if (target_.format == RecordFormat::kLength) {
        const auto count = static_cast<std::uint32_t>(length);
        const char bytes[4] = {static_cast<char>(count & 0xFF), static_cast<char>(count >> 8 & 0xFF),
                               static_cast<char>(count >> 16 & 0xFF), static_cast<char>(count >> 24 & 0xFF)};
        if (!Hold(bytes, sizeof bytes)) return false;
    }
    if (!Hold(record, length)) return false;
    return target_.format != RecordFormat::kLines || Hold("\n", 1);
}

bool FileSink::Save() {
    const std::lock_guard<std::mutex> guard(lock_);
    if (!failure_.empty() || !WriteHeld()) return false;
    return platform::SyncFile(descriptor_) == 0 || Fail("bring to the medium");
}

bool FileSink::HasLength(std::uint64_t bytes) {
    const std::lock_guard<std::mutex> guard(lock_);
    return platform::IsFileAt(descriptor_, target_.path, bytes);
}

bool FileSink::Finish() {
    StopIdleWriter();
    if (!failure_.empty() || !WriteHeld()) return false;
    if (platform::SyncFile(descriptor_) != 0) return Fail("bring to the medium");
    const int descriptor = std::exchange(descriptor_, -1);
    return platform::CloseDescriptor(descriptor) == 0 || Fail("close");
}

}  // namespace mqam
