// SPDX-License-Identifier: Apache-2.0

// Reads and writes the files of a journal.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>

#include "platform/file.h"

namespace mqjournal {

struct CloseStream {
    void operator()(std::FILE* stream) const { (void)std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

/// Writes all bytes. Returns false with errno set.
[[nodiscard]] inline bool WriteWhole(int descriptor, const void* bytes, std::size_t count) {
    const char* at = static_cast<const char*>(bytes);
    while (count > 0) {
        const long written = platform::WriteBytes(descriptor, at, count);
        if (written == 0) errno = ENOSPC;
        if (written <= 0) return false;
        at += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

}  // namespace mqjournal
