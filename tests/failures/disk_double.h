// SPDX-License-Identifier: Apache-2.0

// Replaces the disk below the C library. The module has real streams with real buffers, and everything that
// they read from and write to the disk goes through this double, where it can fail. So the C library itself
// decides what a failed flush drops, keeps or reports.
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
    /// Removes the faults and the points, and counts the calls from 1 again.
    void BeginProcess();
    /// Drops everything that the streams opened so far write from now on.
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

    // The streams call this for each of their reads and writes.
    const DiskFault* Strike(DiskCall call, const std::string& path);

  private:
    std::vector<DiskFault> faults_;
    DiskFault struck_{};
    std::map<std::pair<DiskCall, std::string>, int> counts_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};
