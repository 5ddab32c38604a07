// What SQLite makes of a page that the disk cannot read: by itself it calls the database malformed, as if it
// were damaged. Databases opened over these files have an I/O error instead, with the system's reason.
#pragma once

namespace mqam {

/// Makes the files known to SQLite, once in a process. Returns the name of the VFS to open a database with,
/// or null when SQLite refuses: its own files are then used.
[[nodiscard]] const char* RegisterSqliteVfs();

}  // namespace mqam
