// The numbered messages of the module: each code with its format, once, as data.
#pragma once

/// The format of a numbered message, or null when no row has that code. Every format prints the code itself
/// first, so the code is the first argument; the message's own arguments follow. "%ld" takes a long, so that
/// an MQLONG, whose C type differs between the systems, is cast and prints the same on both.
[[nodiscard]] const char* GetMsgFormat(int code);
