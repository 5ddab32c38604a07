// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/checkpoint_look.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>

#include "tests/support/files.h"

CheckpointLook LookAtCheckpoint(const std::string& path) {
    CheckpointLook look;
    look.exists = FileExists(path);
    if (!look.exists) return look;
    const std::string bytes = ReadFile(path);
    look.bytes = bytes.size();
    std::size_t at = 4;
    if (bytes.size() < at) return look;
    look.wholeBytes = at;
    std::uint64_t length = 0;
    while (at + sizeof length <= bytes.size()) {
        std::memcpy(&length, bytes.data() + at, sizeof length);
        at += sizeof length;
        if (length > bytes.size() - at) break;
        if (length > 0) look.records.push_back(bytes.substr(at, static_cast<std::size_t>(length)));
        at += static_cast<std::size_t>(length);
        look.wholeBytes = at;
    }
    return look;
}

std::string LeftTemporaryFile() {
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        std::string name = entry.path().filename().string();
        if (name.rfind("MQAMtmp.", 0) == 0) return name;
    }
    return "";
}

bool PrepareCheckpoint(bool positionStored) {
    const std::string temporary = LeftTemporaryFile();
    if (!temporary.empty()) {
        // H8: the temporary file is complete if the checkpoint file is gone, because that is deleted only
        // after the temporary file is written. If both exist, the temporary one may be incomplete.
        if (!FileExists(kCheckpointFile) && positionStored) {
            std::filesystem::rename(temporary, kCheckpointFile);
        } else {
            std::filesystem::remove(temporary);
        }
    }
    const CheckpointLook look = LookAtCheckpoint(kCheckpointFile);
    EXPECT_TRUE(look.exists || !positionStored) << "a position is stored, and no checkpoint file is there";
    // H22: a torn tail was never committed.
    if (!look.records.empty() && look.wholeBytes < look.bytes)
        std::filesystem::resize_file(kCheckpointFile, look.wholeBytes);
    return positionStored && !look.records.empty();
}
