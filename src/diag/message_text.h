// The message text: one buffer of 1024 bytes into which every statement of the module is formatted before it
// is traced or reported. What was formatted last stays readable: a failed open of the queue reports whatever
// stands here when no message of its own applies.
#pragma once

/// The text formatted last; empty before the first. Valid until the next text is formatted.
[[nodiscard]] const char* MessageText();

/// Formats into the message text, cut at 1023 characters. No argument may point into the message text itself.
/// Returns MessageText().
[[gnu::format(printf, 1, 2)]] const char* FormatText(const char* format, ...);

/// Formats the numbered message of that code into the message text, likewise; the arguments are those behind
/// the code. Requires a code of the catalogue. Returns MessageText().
const char* FormatNumbered(int code, ...);

/// Appends to the message text at most count bytes, no further than a NUL among them and the room left.
/// Returns MessageText().
const char* AppendBytes(const void* bytes, unsigned count);
