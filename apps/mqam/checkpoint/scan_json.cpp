// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/scan_json.h"

#include <algorithm>
#include <cstdio>

#include "mqam/checkpoint/damage.h"
#include "mqam/checkpoint/integrity.h"

namespace mqam {

namespace {

const char* NameVerdict(const CheckpointScan& scan) {
    switch (CheckIntegrity(scan)) {
        case Integrity::kIntact: return "intact";
        case Integrity::kIncomplete: return "incomplete";
        case Integrity::kDamaged: return "damaged";
    }
    return "";
}

std::uint64_t DataBytes(const CheckpointScan& scan) {
    std::uint64_t bytes = 0;
    for (const ScannedRecord& record : scan.records)
        bytes += record.length;
    return bytes;
}

void WriteLoss(JsonWriter& json, const CheckpointScan& scan) {
    const Loss loss = EstimateLoss(scan);
    json.Key("lost").BeginObject();
    json.BoolMember("sequence", HasNoSequence(scan));
    json.NumberMember("from", loss.from).NumberMember("to", loss.to);
    json.NumberMember("records_at_most", loss.recordsMax);
    json.Key("records_likely");
    if (loss.recordsLikely == 0 && loss.recordsMax != 0) {
        json.Null();
    } else {
        json.Number(loss.recordsLikely);
    }
    json.NumberMember("records_after_damage", scan.recordsAfter.size());
    json.BoolMember("last_record_is_doubtful", loss.lastRecordIsDoubtful).EndObject();
}

std::string HexOf(const std::string& bytes) {
    std::string digits;
    for (const char byte : bytes) {
        char two[4];
        std::snprintf(two, sizeof two, "%02x", static_cast<unsigned char>(byte));
        digits += two;
    }
    return digits;
}

}  // namespace

void WriteScanMembers(JsonWriter& json, const CheckpointScan& scan) {
    json.TextMember("file", scan.path);
    if (scan.shape == CheckpointShape::kMissing) {
        json.TextMember("verdict", "missing");
        return;
    }
    if (scan.shape == CheckpointShape::kUnreadable) {
        json.TextMember("verdict", "unreadable").TextMember("error", scan.error);
        return;
    }
    json.TextMember("verdict", NameVerdict(scan));
    if (scan.shape == CheckpointShape::kHeaderOnly || scan.shape == CheckpointShape::kRecords) {
        json.Key("checkpoint").SignedNumber(scan.sequence);
    }
    json.NumberMember("bytes", scan.fileBytes).NumberMember("intact_bytes", scan.intactBytes);
    json.NumberMember("records", scan.records.size()).NumberMember("record_bytes", DataBytes(scan));
    if (IsDamaged(scan)) WriteLoss(json, scan);
}

void WriteListedRecords(JsonWriter& json, const CheckpointScan& scan, const ListedRecords& listed) {
    const std::size_t count = scan.records.size();
    const std::size_t first = std::min(listed.first, count);
    const std::size_t last = std::min(listed.last, count - first);
    json.BeginArray();
    for (std::size_t i = 0; i < count; ++i) {
        if (i >= first && i < count - last) continue;
        const ScannedRecord& record = scan.records[i];
        json.BeginObject().NumberMember("offset", record.offset).NumberMember("length", record.length);
        json.TextMember("begins", HexOf(record.head)).EndObject();
    }
    json.EndArray();
}

}  // namespace mqam
