// SPDX-License-Identifier: Apache-2.0

// A disk below the C library. The module's streams are real ones with real buffers, and everything that they
// finally read and write goes through this double, where it can fail. So the C library itself decides what a
// failed flush drops, keeps or reports.
#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

enum class DiskCall { Read, Write };

struct DiskFault {
    DiskCall call = DiskCall::Write;
    std::string file{};  ///< part of the path; empty for any
    int nth = 1;         ///< number of the call on the file, counted since BeginProcess
    int error = 0;
    bool takesHalf = false;  ///< Write: half of the bytes are written
    bool stays = false;      ///< every later call fails as well
};

class DiskDouble {
  public:
    /// Opens a stream as std::fopen does.
    std::FILE* Open(const char* path, const char* mode);
    void Add(const DiskFault& fault) { faults_.push_back(fault); }
    /// Restarts the counts and removes the fault.
    void BeginProcess();
    /// From now on, drops what the streams that are open write.
    void EndProcess() { *alive_ = false; }

    std::function<void(const DiskFault& fault, const std::string& path)> onStrike;

    struct Point {
        DiskCall call;
        int nth;
        std::string file;
    };
    std::vector<Point> points;  ///< every call of the process so far

    struct File {
        DiskDouble* disk;
        int descriptor;
        std::string path;
        std::shared_ptr<bool> alive;
    };

    // These are called by the streams.
    const DiskFault* Strike(DiskCall call, const std::string& path);

  private:
    std::vector<DiskFault> faults_;
    DiskFault struck_{};
    std::map<std::pair<DiskCall, std::string>, int> counts_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};
