// SPDX-License-Identifier: Apache-2.0
#include "tests/recovery/trails/checkpoint_picture.h"

#include <cstring>
#include <filesystem>

#include "tests/support/files.h"

RestartFiles LookAtRestartFiles() {
    RestartFiles files;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::current_path())) {
        const std::string name = entry.path().filename().string();
        if (name == kCheckpointFile || name.rfind(kTemporaryPrefix, 0) == 0) files[name] = ReadFile(name);
    }
    return files;
}

void PutRestartFiles(const RestartFiles& files) {
    for (const auto& [name, bytes] : LookAtRestartFiles())
        std::filesystem::remove(name);
    for (const auto& [name, bytes] : files)
        WriteFile(name, bytes);
}

std::vector<std::string> TemporaryFiles(const RestartFiles& files) {
    std::vector<std::string> names;
    for (const auto& [name, bytes] : files) {
        if (name != kCheckpointFile) names.push_back(name);
    }
    return names;
}

CheckpointPicture PictureOf(const std::string& bytes) {
    CheckpointPicture picture;
    if (bytes.size() < sizeof picture.sequence) return picture;
    picture.hasHeader = true;
    std::memcpy(&picture.sequence, bytes.data(), sizeof picture.sequence);
    picture.wholeBytes = sizeof picture.sequence;
    std::uint64_t length = 0;
    while (bytes.size() - picture.wholeBytes >= sizeof length) {
        std::memcpy(&length, bytes.data() + picture.wholeBytes, sizeof length);
        if (bytes.size() - picture.wholeBytes - sizeof length < length) break;
        picture.offsets.push_back(picture.wholeBytes);
        picture.wholeBytes += sizeof length + static_cast<std::size_t>(length);
    }
    return picture;
}
