// SPDX-License-Identifier: Apache-2.0

// Reads the module's trace file line by line.
#pragma once

#include <ios>
#include <string>
#include <vector>

/// Removes the time stamp: "12:34:56: text" becomes "text". A line without one, such as the second line of an
/// error block, stays as it is.
std::string WithoutStamp(const std::string& line);

/// Splits a text at "\n". A text that ends with a line end has no empty last line.
std::vector<std::string> SplitLines(const std::string& text);

/// Returns a trace line as the routine writes it, without the stamp: "PIDMMain(info): text".
std::string InfoLine(const std::string& function, const std::string& text);
std::string WarningLine(const std::string& function, const std::string& text);
std::string ErrorLine(const std::string& function, const std::string& text);

class TraceReader {
  public:
    explicit TraceReader(std::string path = "trace.txt") : path_(std::move(path)) {}

    /// Returns the whole file with "\n" as line end, or an empty string if there is no file.
    [[nodiscard]] std::string Text() const;
    /// Returns all lines without their stamps.
    [[nodiscard]] std::vector<std::string> Lines() const;
    /// Returns the lines written since the last call of NewLines or Skip. Only these are read: a test that
    /// calls this after each of some thousand requests would otherwise spend its time on lines that it has
    /// seen.
    std::vector<std::string> NewLines();
    /// Skips what is already there.
    void Skip() { NewLines(); }

  private:
    std::string path_;
    std::streamoff seenBytes_ = 0;
    bool inLine_ = false;  ///< the last line seen had no line end yet
};
