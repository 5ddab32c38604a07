// Numbers as users write them in keywords and attributes.
#pragma once

#include <cstddef>
#include <cstdint>

/// Reads leading white space, an optional sign and digits; what follows is ignored and text without digits is
/// 0. A number beyond 32 bits becomes the nearest limit, so that it is out of every range instead of wrapping
/// into one.
///   text  in  length bytes, or fewer when a NUL ends it before
[[nodiscard]] std::int32_t ReadNumber(const char* text, std::size_t length);
