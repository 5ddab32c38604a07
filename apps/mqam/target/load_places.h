// SPDX-License-Identifier: Apache-2.0

// Where the files of a restartable load are. Every path is decided here, once, and is absolute and real: links are
// followed, so that two names of one file are one path, and a lock cannot be bypassed by a link.
#pragma once

#include <string>

namespace mqam {

/// The name of the directory of a load is what its files are named after, followed by this.
inline constexpr const char* kLoadDirectorySuffix = ".load";

struct LoadPlaces {
    /// The load's own directory, next to its target: locks, and the files for which the user named no other place.
    std::string directory;
    /// The restart information. Empty if the target keeps it itself.
    std::string restartFile;
    /// The checkpoint file, unless the user named another one.
    std::string checkpointFile;
};

/// Returns the absolute path with links followed. The file need not exist.
[[nodiscard]] std::string RealPath(const std::string& path);

/// Returns the places of a load.
///   target       what the names of the load's files begin with: the real path of the target file, or that of the
///                database and the table
///   restartFile  as the user gave it; empty = in the load's directory
[[nodiscard]] LoadPlaces PlacesOfFile(const std::string& target, const std::string& restartFile);

/// The same for a target that keeps the restart information itself.
[[nodiscard]] LoadPlaces PlacesOfDatabase(const std::string& target);

}  // namespace mqam
