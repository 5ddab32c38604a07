// SPDX-License-Identifier: Apache-2.0

// Writes the records of a checkpoint file to a file of their own: all that can be read, on both sides of any
// damage.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mqam/base/status.h"
#include "mqam/checkpoint/damage.h"
#include "mqam/checkpoint/scan.h"
#include "mqam/target/record_format.h"
#include "mqam/target/record_sink.h"
#include "mqam/target/restart_state.h"

namespace mqam {

/// Lists what can be written of a checkpoint file, in the order of the file.
struct ExportPlan {
    std::vector<ScannedRecord> before;  ///< complete records before any damage
    /// A record whose length is right but for one bit, if the records after it begin where the corrected
    /// length leads.
    std::optional<ScannedRecord> corrected;
    std::vector<ScannedRecord> after;  ///< records after the damage that are separated reliably
    std::uint64_t leftOut = 0;  ///< records that are not written because the load has loaded them already
    Loss loss;
    std::uint64_t tornBytes = 0;  ///< the fragment of a record at the end of the file; it was never committed
};

/// Returns the offset before which every record of the file is in the target, or none if file and position do not fit.
[[nodiscard]] std::optional<std::uint64_t> FindFirstUnloaded(const CheckpointScan& scan,
                                                             const PositionData& position);

/// Plans the export of a file that could be read. Empty records carry nothing and do not count.
///   stored  the state of the load that the file belongs to, to leave out what is in its target already; null if every
///           record is to be written. Nothing is left out if file and state do not show which records those are.
[[nodiscard]] ExportPlan PlanExport(const CheckpointScan& scan, const RestartState* stored);

/// Returns whether every record that the module saved in the file is written or in the target, as far as the file shows.
[[nodiscard]] bool IsComplete(const ExportPlan& plan);

[[nodiscard]] std::uint64_t CountRecords(const ExportPlan& plan);

/// Says what was written.
struct ExportCounts {
    std::uint64_t records = 0;
    std::uint64_t bytes = 0;          ///< of the records, without what the format adds
    std::uint64_t withLineFeeds = 0;  ///< records that contain a line feed
};

/// Puts the records into an open sink. The error is that of the sink, or kTransient if the file cannot be read or has
/// changed since the scan.
Status PutRecords(const std::string& checkpointFile, const ExportPlan& plan, RecordSink& sink,
                  ExportCounts& counts);

/// Writes the records to the new file `path`. It is complete and on disk when this succeeds; on failure there is none.
/// The error is kRefused if `path` exists, kTransient if a file cannot be read or written or has changed since the scan.
Status ExportRecords(const std::string& checkpointFile, const ExportPlan& plan, const std::string& path,
                     RecordFormat format, ExportCounts& counts);

/// Describes what is written and what is missing, with offsets, in complete lines.
[[nodiscard]] std::string DescribeExport(const ExportPlan& plan);

}  // namespace mqam
