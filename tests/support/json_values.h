// SPDX-License-Identifier: Apache-2.0

// Reads JSON strictly, so that a test can compare single values of an answer and notices text that is not
// JSON.
#pragma once

#include <map>
#include <optional>
#include <string>

/// Returns the values of one JSON text by their paths: {"a": [{"b": 1}]} has "a.0.b" with the value "1". A
/// string is decoded; numbers, true, false and null are as written; an empty object or array has the value
/// "{}" or "[]". Returns nullopt unless the text is exactly one JSON value in valid UTF-8, with nothing but
/// white space around it.
[[nodiscard]] std::optional<std::map<std::string, std::string>> ReadJson(const std::string& text);
