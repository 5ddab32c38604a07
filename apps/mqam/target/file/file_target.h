// SPDX-License-Identifier: Apache-2.0

// Keeps records in a file and the restart state in another one. The file is synced to disk before the state
// that counts its length, and a restart truncates the file to that length.
#pragma once

#include <memory>
#include <string>

#include "mqam/target/file/file_sink.h"
#include "mqam/target/target.h"

namespace mqam {

struct FileTargetSettings {
    std::string path;  ///< of the records, absolute and real
    LoadPlaces places;
    RecordFormat format = RecordFormat::kLines;
    bool force = false;   ///< a new load replaces the contents of the file
    bool append = false;  ///< a new load adds to it
    NewlineRule newlines = NewlineRule::kKeep;
};

class FileTarget : public Target {
  public:
    explicit FileTarget(FileTargetSettings settings);

    Status LoadState(std::optional<RestartState>& state) override;
    [[nodiscard]] bool IsOccupied() override;
    Status CheckNew() override;
    Status Begin(RestartState& state) override;
    Status RollBackTo(const RestartState& state) override;
    Status ForgetState() override;
    Status ReadLastRecord(const RestartState& state, std::vector<char>& record) override;
    Status Put(const char* record, std::size_t length) override;
    [[nodiscard]] std::uint64_t Length() const override {
        return sink_ == nullptr ? length_ : length_ + sink_->BytesPut();
    }
    [[nodiscard]] std::uint64_t RecordsWithLineFeeds() const override {
        return sink_ == nullptr ? 0 : sink_->RecordsWithLineFeeds();
    }
    Status Store(const RestartState& state) override;
    Status StoreEnd(const RestartState& state) override;
    [[nodiscard]] const std::string& Name() const override { return settings_.path; }
    [[nodiscard]] std::string Format() const override {
        return NameOf(RecordLayout{settings_.format, settings_.newlines});
    }
    [[nodiscard]] const LoadPlaces& Places() const override { return settings_.places; }
    [[nodiscard]] std::vector<LoadFile> Files() const override;
    [[nodiscard]] const std::string& StateName() const override { return RestartFile(); }

  private:
    [[nodiscard]] const std::string& RestartFile() const { return settings_.places.restartFile; }
    Status CheckNewFile(std::uint64_t& bytes) const;

    FileTargetSettings settings_;
    std::unique_ptr<FileSink> sink_;
    std::uint64_t length_ = 0;  // of the file when sink_ was opened
};

}  // namespace mqam
