// A disk under the C library: the module's streams are real ones with real buffers, and what they read and
// write at the end goes through here, where it can fail. So what a failed flush drops, keeps or says is the C
// library's own doing.
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
    int nth = 1;         ///< call on the file, counted since BeginProcess
    int error = 0;
    bool takesHalf = false;  ///< Write: half of the bytes get through
    bool stays = false;      ///< strikes every later call as well
};

class DiskDouble {
  public:
    /// As std::fopen.
    std::FILE* Open(const char* path, const char* mode);
    void Add(const DiskFault& fault) { faults_.push_back(fault); }
    /// Counts start again and no fault is left.
    void BeginProcess();
    /// What the streams opened so far still write reaches no file.
    void EndProcess() { *alive_ = false; }

    std::function<void(const DiskFault& fault, const std::string& path)> onStrike;

    struct Point {
        DiskCall call;
        int nth;
        std::string file;
    };
    std::vector<Point> points;  ///< every call of the process

    struct File {
        DiskDouble* disk;
        int descriptor;
        std::string path;
        std::shared_ptr<bool> alive;
    };

    // For the streams.
    const DiskFault* Strike(DiskCall call, const std::string& path);

  private:
    std::vector<DiskFault> faults_;
    DiskFault struck_{};
    std::map<std::pair<DiskCall, std::string>, int> counts_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};
