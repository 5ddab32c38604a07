#include "tests/support/program_runner.h"

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

bool WaitForText(const std::string& path, const std::string& text, int seconds) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (ReadFileIfAny(path).find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() > limit) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

bool RunningProgram::WaitForError(const std::string& text, int seconds) const {
    return WaitForText(errPath_, text, seconds);
}

ProgramResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& folder, const std::map<std::string, std::string>& environment) {
    return RunningProgram(program, arguments, environment, folder).Wait();
}

std::string ReadFileIfAny(const std::string& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

std::string WithUnixLineEnds(const std::string& text) {
    std::string lines;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
        lines += text[i];
    }
    return lines;
}
