// SPDX-License-Identifier: Apache-2.0

// Takes the records of an unprotected load. A load does not know which kind of sink it writes to.
#pragma once

#include <cstddef>

#include "mqam/base/status.h"

namespace mqam {

/// After a call that failed, no other may follow. All calls come from one thread.
class RecordSink {
  public:
    RecordSink() = default;
    RecordSink(const RecordSink&) = delete;
    RecordSink& operator=(const RecordSink&) = delete;
    virtual ~RecordSink() = default;

    /// Opens the sink. It is called once, when the input is open and before the first record.
    virtual Status Open() = 0;

    /// Puts one record; the bytes are not kept.
    virtual Status Put(const char* record, std::size_t length) = 0;

    /// Writes what is still buffered, syncs it to disk and closes the sink. Success may be reported only
    /// after this.
    virtual Status Finish() = 0;
};

}  // namespace mqam
