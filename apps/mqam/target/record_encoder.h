// SPDX-License-Identifier: Apache-2.0

// Puts a record into the form that a file has, and finds the last record of a file again: a restart compares it with the
// record that the module replays.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "mqam/base/status.h"
#include "mqam/target/record_format.h"

namespace mqam {

/// What happens to a line feed in a record of the format `lines`, in which it would look like the end of the record.
enum class NewlineRule : std::uint8_t {
    kKeep,    ///< it is written as it is
    kFail,    ///< the record is refused
    kEscape,  ///< it is written as \n, and a backslash as \\ (two of them)
};

struct RecordLayout {
    RecordFormat format = RecordFormat::kLines;
    NewlineRule newlines = NewlineRule::kKeep;
};

/// Returns the name under which a restart remembers the layout: "lines", "lines-escaped", "json". Layouts with one name
/// make the same file of the same records.
[[nodiscard]] std::string NameOf(const RecordLayout& layout);

/// Returns the warning about records that look like several, without a line end; an empty string if there are none.
[[nodiscard]] std::string DescribeLineFeeds(std::uint64_t records);

class RecordEncoder {
  public:
    /// The parts of an encoded record, in order; valid until the next call.
    struct Encoded {
        std::string_view before;
        std::string_view body;
        std::string_view after;

        [[nodiscard]] std::size_t Bytes() const { return before.size() + body.size() + after.size(); }
    };

    ///   recordsBefore  in  how many records of the load are in the file already; json numbers the records
    RecordEncoder(RecordLayout layout, std::uint64_t recordsBefore);

    /// Encodes one record. kPermanent: the record has a line feed that the layout refuses.
    Status Encode(const char* record, std::size_t length, Encoded& encoded);

    /// Returns how many of the records had a line feed; only counted for lines.
    [[nodiscard]] std::uint64_t RecordsWithLineFeeds() const { return recordsWithLineFeeds_; }

  private:
    void EncodeJson(std::string_view record);

    RecordLayout layout_;
    std::uint64_t records_;
    std::uint64_t recordsWithLineFeeds_ = 0;
    std::string scratch_;
};

/// Returns how many bytes at the end of a file are enough to find the last record of `recordBytes` bytes.
[[nodiscard]] std::uint64_t TailBytes(const RecordLayout& layout, std::uint64_t recordBytes);

/// Finds the last record of a file.
///   tail         in   the last bytes of the file: TailBytes of them, or the whole file if it is shorter
///   recordBytes  in   the length of the record
///   record       out  unchanged on failure
/// Returns false if the bytes do not end with a record of this length in this layout.
[[nodiscard]] bool DecodeLastRecord(const RecordLayout& layout, std::string_view tail,
                                    std::uint64_t recordBytes, std::string& record);

}  // namespace mqam
