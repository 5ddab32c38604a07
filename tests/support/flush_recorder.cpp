// SPDX-License-Identifier: Apache-2.0
#include "tests/support/flush_recorder.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "platform/library.h"

namespace {

FlushRecorder* currentRecorder = nullptr;

int RecordedFlush(std::FILE* stream) {
    currentRecorder->Add(stream == nullptr ? "all" : "one");
    return std::fflush(stream);
}

}  // namespace

FlushRecorder::FlushRecorder(platform::LibraryHandle module) {
    currentRecorder = this;
    patch_ = std::make_unique<ImportPatch>(module, std::initializer_list<const char*>{"fflush"},
                                           reinterpret_cast<void*>(&RecordedFlush));
    EXPECT_TRUE(patch_->Found()) << "the module does not import fflush";
}

FlushRecorder::~FlushRecorder() {
    patch_.reset();
    currentRecorder = nullptr;
}
