// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/file/restart_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/durable_file.h"

namespace mqam {

namespace {

// No restart file is as long as this, so a large file given by mistake is not read completely.
constexpr std::size_t kBytesMax = 1048576;

enum class FileRead { kWhole, kMissing, kFailed };

FileRead ReadWhole(const std::string& path, std::string& text) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    // Only ENOENT means that there is no file. After any other error a new load could overwrite an unfinished one.
    if (file == nullptr) return errno == ENOENT ? FileRead::kMissing : FileRead::kFailed;
    text.resize(kBytesMax);
    text.resize(std::fread(text.data(), 1, text.size(), file));
    const bool read = std::ferror(file) == 0;
    const int code = errno;
    static_cast<void>(std::fclose(file));
    errno = code;
    return read ? FileRead::kWhole : FileRead::kFailed;
}

}  // namespace

std::string ScratchOfRestartFile(const std::string& path) {
    return path + ".new";
}

Status ReadRestartFile(const std::string& path, std::optional<RestartState>& state) {
    state.reset();
    std::string text;
    const FileRead read = ReadWhole(path, text);
    if (read == FileRead::kMissing) return {};
    if (read == FileRead::kFailed) {
        return Status::Transient("restart file " + path + " cannot be read: " + std::strerror(errno));
    }
    RestartState parsed;
    const Status status = ParseRestartState(text, parsed);
    if (!status.IsOk()) {
        return Status::Refused(
            "restart file " + path + " " + status.Error() +
            "; restore an undamaged copy of the file as it was last written. Without it nothing "
            "can say which records of the checkpoint file are loaded");
    }
    state = parsed;
    return {};
}

Status ReplaceRestartFile(const std::string& path, const RestartState& state) {
    std::string error;
    if (platform::ReplaceDurably(path, ScratchOfRestartFile(path), FormatRestartState(state), error))
        return {};
    return Status::Transient("cannot replace restart file " + path + ": " + error);
}

}  // namespace mqam
