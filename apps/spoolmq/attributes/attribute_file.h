// SPDX-License-Identifier: Apache-2.0

// Reads an attribute file, which may be edited at any time, and keeps the values that were last read from it.
#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"
#include "spoolmq/attributes/attributes.h"

namespace spoolmq {

/// Refreshing it reads the file's times, and its content only after a change.
template <typename Attributes>
struct AttributeFile {
    std::string path;
    Attributes values;
    platform::FileInfo
        readFile;  ///< the file that the values come from; its identity is 0 when there was no file
    std::int64_t readAtNs = 0;  ///< FileClockNs when it was read
    bool isRead = false;
};

/// Brings the values up to date. kFailed: the file cannot be read or is not valid. The error then names file
/// and line, and the values are the last valid ones.
Status RefreshAttributes(AttributeFile<QmgrAttributes>& file);
Status RefreshAttributes(AttributeFile<QueueAttributes>& file);

}  // namespace spoolmq
