// SPDX-License-Identifier: Apache-2.0

// A C stream that is closed when its owner goes out of scope. The result of closing is dropped, so a stream that
// was written must be flushed before.
#pragma once

#include <cstdio>
#include <memory>

namespace platform {

struct CloseStream {
    void operator()(std::FILE* stream) const { (void)std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

}  // namespace platform
