// The module's trace file, read line by line.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// "12:34:56: text" gives "text"; a line without a stamp, such as the further lines of an error block, is
/// kept.
std::string WithoutStamp(const std::string& line);

/// Splits at "\n". A text that ends with a line end has no empty last line.
std::vector<std::string> SplitLines(const std::string& text);

/// A trace line as the routine writes it, without its stamp: "PIDMMain(info): text".
std::string InfoLine(const std::string& function, const std::string& text);
std::string WarningLine(const std::string& function, const std::string& text);
std::string ErrorLine(const std::string& function, const std::string& text);

class TraceReader {
  public:
    explicit TraceReader(std::string path = "trace.txt") : path_(std::move(path)) {}

    /// The whole file, line ends as "\n"; empty when there is no file.
    [[nodiscard]] std::string Text() const;
    /// All lines, stamps taken off.
    [[nodiscard]] std::vector<std::string> Lines() const;
    /// The lines written since the last call of NewLines or Skip.
    std::vector<std::string> NewLines();
    /// Skips what is there already.
    void Skip() { NewLines(); }

  private:
    std::string path_;
    std::size_t seen_ = 0;
};
