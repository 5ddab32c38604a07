// Records in a file, the restart state in another one: the file is on the medium before the state that counts
// its length, and a restart cuts it back to that length.
#pragma once

#include <memory>
#include <string>

#include "mqam/target/file/file_sink.h"
#include "mqam/target/target.h"

namespace mqam {

struct FileTargetSettings {
    std::string path;         ///< of the records, absolute
    std::string restartFile;  ///< absolute
    RecordFormat format = RecordFormat::kLines;
    bool force = false;   ///< a new load replaces what the file holds
    bool append = false;  ///< a new load adds to it
};

class FileTarget : public Target {
  public:
    explicit FileTarget(FileTargetSettings settings);

    [[nodiscard]] bool LoadState(std::optional<RestartState>& state) override;
    [[nodiscard]] bool IsOccupied() override;
    [[nodiscard]] bool Begin(RestartState& state) override;
    [[nodiscard]] bool RollBackTo(const RestartState& state) override;
    [[nodiscard]] bool Put(const char* record, std::size_t length) override;
    [[nodiscard]] std::uint64_t Length() const override { return length_; }
    [[nodiscard]] bool Store(const RestartState& state) override;
    [[nodiscard]] bool StoreEnd(const RestartState& state) override;
    [[nodiscard]] const std::string& Name() const override { return settings_.path; }
    [[nodiscard]] std::string Format() const override { return NameOf(settings_.format); }
    [[nodiscard]] std::string CommandLock() const override { return settings_.restartFile + ".lock"; }
    [[nodiscard]] std::string AttemptLock() const override { return settings_.restartFile + ".life.lock"; }
    [[nodiscard]] std::vector<LoadFile> Files() const override;
    [[nodiscard]] const std::string& StateName() const override { return settings_.restartFile; }

  private:
    [[nodiscard]] bool EndsWithLastRecord(const RestartState& state);
    [[nodiscard]] bool ReplaceState(const RestartState& state);

    FileTargetSettings settings_;
    std::unique_ptr<FileSink> sink_;
    std::uint64_t length_ = 0;
};

}  // namespace mqam
