// The help that the HELP keyword produces.
#pragma once

/// Appends the keyword help to the console report text, at most once for the life of the loaded module: it is
/// seen on standard output at Open, unless the host has supplied its log handle.
void ShowKeywordHelp();
