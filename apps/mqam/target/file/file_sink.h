// SPDX-License-Identifier: Apache-2.0

// Writes records into a file or to standard output.
//
// Records are buffered so that many are written at a time, but not for long: as soon as none has come for a
// moment, a thread writes the buffer. So while a load waits for messages its records are in the file,
// whatever ends it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "mqam/target/record_encoder.h"
#include "mqam/target/record_sink.h"
#include "platform/file.h"

namespace mqam {

struct FileSinkSettings {
    std::string path;     ///< shown in errors; opened unless a descriptor is given
    int descriptor = -1;  ///< an open file to write to instead
    platform::OpenMode mode = platform::OpenMode::kCreate;
    RecordFormat format = RecordFormat::kLines;
    NewlineRule newlines = NewlineRule::kKeep;
    std::uint64_t recordsBefore = 0;  ///< of the load, which are in the file already
};

class FileSink : public RecordSink {
  public:
    explicit FileSink(FileSinkSettings target);
    ~FileSink() override;

    Status Open() override;
    Status Put(const char* record, std::size_t length) override;
    Status Finish() override;

    /// Syncs everything put so far to disk.
    Status Save();

    /// Returns whether the file has exactly `bytes` bytes and is still the file at its path. If not, errno is
    /// set as by IsFileAt. It must be called after Save; a descriptor that was given has no path.
    [[nodiscard]] bool HasLength(std::uint64_t bytes);

    /// Returns how many bytes the records put so far take in the file.
    [[nodiscard]] std::uint64_t BytesPut();
    /// Returns how many records of the format `lines` look like several, because a line feed in them was kept.
    [[nodiscard]] std::uint64_t RecordsWithLineFeeds();

    /// Returns the number of records that are in the file completely, also after a failure.
    [[nodiscard]] std::uint64_t RecordsWritten();
    /// Returns the largest number of records that were put and not yet in the file at any one time.
    [[nodiscard]] std::uint64_t MostRecordsHeld();

  private:
    // These require lock_. Each returns false with status_ set if it fails.
    [[nodiscard]] bool Buffer(const char* bytes, std::size_t length);
    [[nodiscard]] bool WriteOut(const char* bytes, std::size_t length);
    [[nodiscard]] bool WriteBuffer();
    [[nodiscard]] bool Sync();
    bool Fail(const char* action);

    void WriteWhenIdle();
    void StopIdleWriter();

    FileSinkSettings target_;
    RecordEncoder encoder_;  // guarded by lock_
    std::thread idleWriter_;
    std::mutex lock_;  // guards everything below
    std::condition_variable stop_;
    bool stopping_ = false;
    bool hasNewRecord_ = false;  // since the idle writer last checked
    int descriptor_ = -1;
    std::vector<char> buffer_;
    std::uint64_t bytesPut_ = 0;
    std::uint64_t bytesWritten_ = 0;
    std::deque<std::uint64_t>
        heldEnds_;  // where each record that is not yet in the file ends, counted in bytesPut_
    std::uint64_t recordsWritten_ = 0;
    std::uint64_t mostRecordsHeld_ = 0;
    Status status_;  // the first failure
};

}  // namespace mqam
