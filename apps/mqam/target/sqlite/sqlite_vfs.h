// SPDX-License-Identifier: Apache-2.0

// Wraps SQLite's VFS so that a page that the disk cannot read is an I/O error, with the system's error. By
// itself SQLite calls such a database malformed, as if it were damaged.
#pragma once

namespace mqam {

/// Registers the VFS with SQLite, once per process. Returns the name with which to open a database, or null if SQLite
/// refuses; it then uses its own VFS.
[[nodiscard]] const char* RegisterSqliteVfs();

}  // namespace mqam
