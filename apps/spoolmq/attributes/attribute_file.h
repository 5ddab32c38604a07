// SPDX-License-Identifier: Apache-2.0

// Reads an attribute file, which may be edited at any time, and keeps the values that were last read from it.
#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"
#include "spoolmq/attributes/attributes.h"

namespace spoolmq {

/// The attributes last read from a file. A refresh checks the file's size and times and reads its content
/// only if they may have changed.
template <typename Attributes>
struct AttributeFile {
    std::string path;
    Attributes values;
    /// The file that the values come from; its identity is 0 if there was no file.
    platform::FileInfo readFile;
    std::int64_t readAtNs = 0;  ///< the value of FileClockNs when the file was read
    bool isRead = false;
};

/// Brings the values up to date. Returns kFailed if the file cannot be read or is not valid. The error then
/// names the file, and the line that is not valid; the values remain the last valid ones.
Status RefreshAttributes(AttributeFile<QmgrAttributes>& file);
Status RefreshAttributes(AttributeFile<QueueAttributes>& file);

}  // namespace spoolmq
