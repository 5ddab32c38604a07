// SPDX-License-Identifier: Apache-2.0

// Records how the module flushes: all streams together, or one of them.
#pragma once

#include <memory>
#include <string>

#include "platform/library.h"
#include "tests/support/import_patch.h"

class FlushRecorder {
  public:
    explicit FlushRecorder(platform::LibraryHandle module);
    ~FlushRecorder();
    FlushRecorder(const FlushRecorder&) = delete;
    FlushRecorder& operator=(const FlushRecorder&) = delete;

    /// Returns the flushes in order, as "one all all". "one" is a flush of a single stream, "all" one of all
    /// streams.
    [[nodiscard]] const std::string& Sequence() const { return sequence_; }

    // The replaced function calls this.
    void Add(const std::string& flush) { sequence_ += (sequence_.empty() ? "" : " ") + flush; }

  private:
    std::string sequence_;
    std::unique_ptr<ImportPatch> patch_;
};
