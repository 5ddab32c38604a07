// SPDX-License-Identifier: Apache-2.0
#include "tests/support/output_capture.h"

#include "platform/standard_streams.h"
#include "tests/support/files.h"

OutputCapture::OutputCapture(const std::string& path)
    : path_(path), token_(platform::RedirectStdoutToFile(path)) {}

OutputCapture::~OutputCapture() {
    if (token_ >= 0) platform::RestoreStdout(token_);
}

std::string OutputCapture::Finish() {
    if (token_ >= 0) platform::RestoreStdout(token_);
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
