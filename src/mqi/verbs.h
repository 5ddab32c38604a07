// SPDX-License-Identifier: Apache-2.0

// Declares the verbs of an MQ library that is bound at run time, and finds that library. The module and the
// journal library use the same search, so that a load finds the same library with either.
#pragma once

#include <cstddef>

#include "mqi/mqi.h"

namespace mqamod {

struct Verbs {
    decltype(&MQCONNX) connx;
    decltype(&MQDISC) disc;
    decltype(&MQOPEN) open;
    decltype(&MQCLOSE) close;
    decltype(&MQGET) get;
    decltype(&MQCMIT) cmit;
    decltype(&MQBACK) back;
};

/// This is the size of the text about a failed search. It leaves room for what a report adds.
inline constexpr std::size_t kBindFailureBytes = 900;

/// Binds an MQ library.
///   path     in   the library; if it is null or empty, IBM's libraries are tried by name. The client library
///                 comes before the server library for a client connection (with a channel definition in
///                 `options`, or if one of MQSERVER, MQCHLLIB, MQCHLTAB and MQCCDTURL is set), otherwise the
///                 other way round. Each is looked for by the system's own search and then in IBM's default
///                 directory.
///   verbs    out  unchanged on failure
///   failure  out  the libraries that were not bound, in order, each with the reason; an empty string if the
///                 first one was bound
/// Returns MQRC_NONE; MQRC_MODULE_NOT_FOUND if no library can be loaded; MQRC_MODULE_ENTRY_NOT_FOUND if the
/// library lacks a verb. The library stays loaded until the process ends.
[[nodiscard]] MQLONG BindVerbs(const char* path, const MQCNO* options, Verbs& verbs,
                               char (&failure)[kBindFailureBytes]);

}  // namespace mqamod
