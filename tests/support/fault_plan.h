// SPDX-License-Identifier: Apache-2.0

// Makes the C library's file and memory functions, as the module calls them, fail when the test says so, and
// records the calls. The test's own calls are not touched. Make the plan before the request that opens the
// files concerned, so that it knows which stream is which file.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/library.h"
#include "tests/support/import_patch.h"

enum class FileCall {
    Open,
    Close,
    Read,
    Write,
    Print,
    Flush,
    FlushAll,
    Tell,
    Seek,
    Remove,
    Rename,
    Command,
    Allocate
};

/// One failure. It strikes the nth call of its kind that concerns the file, counted from when it was added.
/// FlushAll is a flush of all streams. The module does not check its result, so the failure shows only as an
/// error of the file's stream. Print is the output of text: one call on Linux, the beginning of a line on
/// Windows. Print and FlushAll are not logged.
struct Fault {
    FileCall call;
    std::string file{};  ///< part of the path; empty for any; Command: part of the command; Allocate: unused
    int nth = 1;
    int error = EIO;              ///< what errno says afterwards
    std::size_t transferred = 0;  ///< Read, Write: bytes that were transferred before the failure
    bool streamError = true;      ///< calls with a stream, except Close: ferror is true afterwards
    bool stays = false;           ///< strikes every later call as well
    std::size_t bytes = 0;        ///< Allocate: the size that fails
    bool carriedOut = false;      ///< Remove, Rename, Command, Close: done, but reported as failed
};

class FaultPlan {
  public:
    explicit FaultPlan(platform::LibraryHandle module);
    ~FaultPlan();
    FaultPlan(const FaultPlan&) = delete;
    FaultPlan& operator=(const FaultPlan&) = delete;

    void Add(const Fault& fault) { faults_.push_back(fault); }
    void Clear() { faults_.clear(); }
    /// Returns how many faults have struck.
    [[nodiscard]] int Struck() const { return struck_; }

    /// Lists the calls on files other than standard streams, in order: "open ck.dat wb+", "write ck.dat 4"
    /// (bytes asked for), "read ck.dat 8", "flush ck.dat", "tell ck.dat", "seek ck.dat 4", "close ck.dat",
    /// "remove ck.dat", "rename MQAMtmp.12 ck.dat", "command del ck.dat". Files are named as the module
    /// opened them.
    std::vector<std::string> log;
    /// The plan calls this before each call that is logged, with the text of the log, and before a flush of
    /// all streams, which is not logged, with "flush all".
    std::function<void(const std::string& call)> hook;
    /// Returns the entries of the log that do not contain the text.
    [[nodiscard]] std::vector<std::string> LogWithout(const std::string& text) const;

    /// A call on a file, or a command, that a fault could have struck. `points` lists all of them in order.
    struct Point {
        FileCall call;
        std::string file;
    };
    std::vector<Point> points;

    /// Closes the module's streams as the death of its process does: what they buffer never reaches a file.
    void AbandonStreams();

    /// The plan calls this when a fault strikes, before the call returns to the module.
    std::function<void(FileCall call, const std::string& file)> onStrike;

    /// If set, opens the files for the module's fopen instead of std::fopen.
    std::function<std::FILE*(const char* path, const char* mode)> opener;
    /// True while the module flushes all streams.
    bool flushingAll = false;

    /// If set, what the module prints to standard output is dropped.
    bool silent = false;

    // The replaced functions call these.
    void Note(const std::string& call);
    Fault* Strike(FileCall call, const std::string& subject, std::size_t bytes = 0);
    std::map<std::FILE*, std::string> streams;

  private:
    std::vector<Fault> faults_;
    int struck_ = 0;
    Fault last_{};
    std::vector<std::unique_ptr<ImportPatch>> patches_;
};
