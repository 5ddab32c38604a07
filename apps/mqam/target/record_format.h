// SPDX-License-Identifier: Apache-2.0

// Says how records follow one another in a file.
#pragma once

namespace mqam {

enum class RecordFormat {
    kLines,   ///< the record, then a line feed
    kLength,  ///< 4 bytes little-endian length, then the record
    kRaw,     ///< the records' bytes, one after the other
    kJson,  ///< a line with a JSON object: the record's number, and its text or, if it is not UTF-8, its bytes in base64
};

struct RecordFormatRow {
    RecordFormat format;
    const char* name;  ///< as the user types it
};

inline constexpr RecordFormatRow kRecordFormats[] = {{RecordFormat::kLines, "lines"},
                                                     {RecordFormat::kLength, "length"},
                                                     {RecordFormat::kRaw, "raw"},
                                                     {RecordFormat::kJson, "json"}};

[[nodiscard]] const char* NameOf(RecordFormat format);

}  // namespace mqam
