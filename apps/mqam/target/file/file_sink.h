// Records into a file or to standard output.
//
// Records are held back to be written many at a time, but never for long: as soon as none came for a moment,
// a thread writes what is held. So a load that waits for messages has its records in the file, whatever ends
// it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "mqam/target/record_format.h"
#include "mqam/target/record_sink.h"
#include "platform/file.h"

namespace mqam {

struct FileSinkSettings {
    std::string path;     ///< shown in complaints; opened unless a descriptor is given
    int descriptor = -1;  ///< an open file to write to instead
    platform::OpenMode mode = platform::OpenMode::kCreate;
    RecordFormat format = RecordFormat::kLines;
};

class FileSink : public RecordSink {
  public:
    explicit FileSink(FileSinkSettings target);
    ~FileSink() override;

    [[nodiscard]] bool Open() override;
    [[nodiscard]] bool Put(const char* record, std::size_t length) override;
    [[nodiscard]] bool Save() override;
    [[nodiscard]] bool Finish() override;
    [[nodiscard]] const std::string& Failure() const override { return failure_; }

    /// Whether the file has so many bytes and still stands at its path; false with errno as IsFileAt has it.
    /// To be asked after Save; an open descriptor that was given has no path.
    [[nodiscard]] bool HasLength(std::uint64_t bytes);

  private:
    // These want lock_ held.
    [[nodiscard]] bool Hold(const char* bytes, std::size_t length);
    [[nodiscard]] bool WriteOut(const char* bytes, std::size_t length);
    [[nodiscard]] bool WriteHeld();
    bool Fail(const char* action);

    void WriteWhenIdle();
    void StopIdleWriter();

    FileSinkSettings target_;
    std::thread idleWriter_;
    std::mutex lock_;  // guards everything below
    std::condition_variable stop_;
    bool stopping_ = false;
    bool recordCame_ = false;  // since the idle writer last looked
    int descriptor_ = -1;
    std::vector<char> held_;
    std::string failure_;
};

}  // namespace mqam
