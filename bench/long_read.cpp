// SPDX-License-Identifier: Apache-2.0

// Reads many records in one process. After every EVERY records it prints a line "records seconds kilobytes":
// the records read, the time they took and the memory that the process uses. It shows whether the module's
// time for a record or its memory grows.
//
//   long_read RECORDS EVERY RECORDS_PER_CHECKPOINT [KEYWORDS]
//
// The messages have MEMORY_MQ_BYTES bytes, 100 by default. KEYWORDS are added to those of the load.
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "bench/module_host.h"

namespace {

// The second number of this file is the resident set in pages.
std::int64_t ResidentKilobytes() {
    std::ifstream file("/proc/self/statm");
    std::int64_t pages = 0;
    file >> pages >> pages;
    return pages * sysconf(_SC_PAGESIZE) / 1024;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 && argc != 5) {
        (void)std::fprintf(stderr, "usage: long_read RECORDS EVERY RECORDS_PER_CHECKPOINT [KEYWORDS]\n");
        return 1;
    }
    const std::int64_t records = std::atoll(argv[1]);
    const std::int64_t every = std::atoll(argv[2]);
    const std::int64_t perCheckpoint = std::atoll(argv[3]);
    // The module prints its report on standard output, which is discarded.
    std::FILE* results = fdopen(dup(STDOUT_FILENO), "w");
    if (results == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) return 1;

    LoadModule(MODULE_FILE, MEMORY_MQ_FILE);
    const std::string keywords = argc == 5 ? argv[4] : "";
    StartLoad("-QMGR QM1 -QNM Q1 -TLF NO -CKFILE long_read.dat " + keywords);
    const auto start = std::chrono::steady_clock::now();
    for (std::int64_t record = 0; record < records; ++record) {
        if (record % perCheckpoint == 0) RequestCheckpoint();
        (void)ReadOne();
        if ((record + 1) % every != 0) continue;
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        (void)std::fprintf(results, "%lld %.3f %lld\n", static_cast<long long>(record + 1), elapsed.count(),
                           static_cast<long long>(ResidentKilobytes()));
        (void)std::fflush(results);
    }
    EndLoad();
    return std::fclose(results) == 0 ? 0 : 1;
}
