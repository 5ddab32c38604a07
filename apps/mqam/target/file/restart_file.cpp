#include "mqam/target/file/restart_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/durable_file.h"

namespace mqam {

namespace {

// More than any restart file has, so that a path that names something else is not read whole.
constexpr std::size_t kBytesMax = 1048576;

enum class FileRead { kWhole, kMissing, kFailed };

FileRead ReadWhole(const std::string& path, std::string& text) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    // A path that cannot be looked at is no path without a file: a load would begin over an unfinished one.
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

bool ReadRestartFile(const std::string& path, std::optional<RestartState>& state, std::string& reason,
                     bool& mayPass) {
    state.reset();
    mayPass = false;
    std::string text;
    const FileRead read = ReadWhole(path, text);
    if (read == FileRead::kMissing) return true;
    if (read == FileRead::kFailed) {
        reason = "restart file " + path + " cannot be read: " + std::strerror(errno);
        mayPass = true;
        return false;
    }
    RestartState parsed;
    std::string words;
    if (!ParseRestartState(text, parsed, words)) {
        reason =
            "restart file " + path + " " + words +
            "; give back an undamaged copy of the file as it was last written. Without it nothing can tell "
            "which records of the checkpoint file are loaded";
        return false;
    }
    state = parsed;
    return true;
}

bool ReplaceRestartFile(const std::string& path, const RestartState& state, std::string& reason) {
    std::string words;
    if (platform::ReplaceDurably(path, ScratchOfRestartFile(path), FormatRestartState(state), words))
        return true;
    reason = "cannot replace restart file " + path + ": " + words;
    return false;
}

}  // namespace mqam
