// SPDX-License-Identifier: Apache-2.0

// Keeps records in a file and the restart state in another one. The file is synced to disk before the state
// that counts its length, and a restart truncates the file to that length.
#pragma once

#include <memory>
#include <string>

#include "mqam/target/file/file_sink.h"
#include "mqam/target/lock_file.h"
#include "mqam/target/target.h"

namespace mqam {

struct FileTargetSettings {
    std::string path;         ///< of the records, absolute
    std::string restartFile;  ///< absolute
    RecordFormat format = RecordFormat::kLines;
    bool force = false;   ///< a new load replaces the contents of the file
    bool append = false;  ///< a new load adds to it
};

class FileTarget : public Target {
  public:
    explicit FileTarget(FileTargetSettings settings);

    Status LoadState(std::optional<RestartState>& state) override;
    [[nodiscard]] bool IsOccupied() override;
    Status Begin(RestartState& state) override;
    Status RollBackTo(const RestartState& state) override;
    Status Put(const char* record, std::size_t length) override;
    [[nodiscard]] std::uint64_t Length() const override { return length_; }
    Status Store(const RestartState& state) override;
    Status StoreEnd(const RestartState& state) override;
    [[nodiscard]] const std::string& Name() const override { return settings_.path; }
    [[nodiscard]] std::string Format() const override { return NameOf(settings_.format); }
    Status AcquireLock(TargetLock lock, int timeoutSeconds) override {
        return AcquireLockFile(LockPath(lock), timeoutSeconds);
    }
    void ReleaseLock(TargetLock lock) override { ReleaseLockFile(LockPath(lock)); }
    [[nodiscard]] std::vector<LoadFile> Files() const override;
    [[nodiscard]] const std::string& StateName() const override { return settings_.restartFile; }

  private:
    [[nodiscard]] std::string LockPath(TargetLock lock) const {
        return settings_.restartFile + (lock == TargetLock::kCommand ? ".lock" : ".life.lock");
    }
    Status CheckLastRecord(const RestartState& state) const;

    FileTargetSettings settings_;
    std::unique_ptr<FileSink> sink_;
    std::uint64_t length_ = 0;
};

}  // namespace mqam
