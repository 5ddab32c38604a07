// Where records go. A target stands behind this interface, so that a load does not know its kind.
#pragma once

#include <cstddef>
#include <string>

namespace mqam {

/// A target of records. Every call returns false on failure, with the words for the user in Failure(); after
/// a failure only Failure() may be called. Called from one thread.
class RecordSink {
  public:
    RecordSink() = default;
    RecordSink(const RecordSink&) = delete;
    RecordSink& operator=(const RecordSink&) = delete;
    virtual ~RecordSink() = default;

    /// Opens the target. Called once, when the input is open and before the first record.
    [[nodiscard]] virtual bool Open() = 0;

    /// Takes one record; the bytes are not kept.
    [[nodiscard]] virtual bool Put(const char* record, std::size_t length) = 0;

    /// Brings everything put so far to the medium. Called between a GetPos and the next Read.
    [[nodiscard]] virtual bool Save() = 0;

    /// Writes what is held back, brings it to the medium and closes. Success may be told only after this.
    [[nodiscard]] virtual bool Finish() = 0;

    [[nodiscard]] virtual const std::string& Failure() const = 0;
};

}  // namespace mqam
