#include "tests/support/output_capture.h"

#include "tests/support/files.h"
#include "tests/support/os.h"

OutputCapture::OutputCapture(const std::string& path) : path_(path), token_(RedirectStandardOutput(path)) {}

OutputCapture::~OutputCapture() {
    if (token_ >= 0) RestoreStandardOutput(token_);
}

std::string OutputCapture::Finish() {
    if (token_ >= 0) RestoreStandardOutput(token_);
    token_ = -1;
    return WithPlainLineEnds(ReadFile(path_));
}

std::string WithPlainLineEnds(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
        plain += text[i];
    }
    return plain;
}
