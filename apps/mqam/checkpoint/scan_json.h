// SPDX-License-Identifier: Apache-2.0

// Writes what a scan found as JSON, for `mqam checkpoint show` and `verify` with --json.
#pragma once

#include <string>

#include "mqam/base/json_writer.h"
#include "mqam/checkpoint/listing.h"
#include "mqam/checkpoint/scan.h"

namespace mqam {

/// Writes the members of an open object: file, shape, verdict, sequence, sizes and counts; "lost" if the file is
/// damaged; "error" if it cannot be read. Members that the file has no value for are left out.
void WriteScanMembers(JsonWriter& json, const CheckpointScan& scan);

/// Writes an array with offset, length and first bytes (hexadecimal) of each record that is listed.
void WriteListedRecords(JsonWriter& json, const CheckpointScan& scan, const ListedRecords& listed);

}  // namespace mqam
