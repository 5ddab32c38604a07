// SPDX-License-Identifier: Apache-2.0

// Measures what the module costs for each record, compared with the least that it could cost.
//
//   FloorGet          only MQGET, which every reader needs
//   Read              the module's Read without checkpoints
//   FloorGetSave      MQGET, one write of the record with its length to a file, and MQCMIT, which every reader
//                     needs that keeps messages safe
//   ReadCheckpointed  the module's Read after a checkpoint, which saves and commits every message
//
// All run in one process with an MQ library that answers from memory, with messages of 100 bytes, 1 KB and
// 32 KB. The files are in the current directory. They are rewritten every 64 MB so that they stay in the page
// cache.
//   read_bench [--benchmark_...]
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "bench/memory_mq.h"
#include "bench/module_host.h"
#include "mqi/mqi.h"

namespace {

constexpr std::int64_t kFileBytes = 64 << 20;
constexpr char kFloorFile[] = "read_bench_floor.dat";
constexpr char kKeywords[] = "-QMGR QM1 -QNM Q1 -TLF NO -BKSZ 1048576";

void* library;

template <typename Function>
Function Find(const char* name) {
    return reinterpret_cast<Function>(dlsym(library, name));
}

void ChooseSize(benchmark::State& state) {
    Find<SetMessageBytesFunction>("SetMessageBytes")(static_cast<std::size_t>(state.range(0)));
}

void TellRates(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

// The number of records of that size that fit into a file before it is rewritten.
std::int64_t RecordsPerFile(const benchmark::State& state) {
    return kFileBytes / (state.range(0) + 8) + 1;
}

void FloorGet(benchmark::State& state) {
    ChooseSize(state);
    const auto get = Find<decltype(&MQGET)>("MQGET");
    static char buffer[kLargestMessage];
    MQMD md = MqmdDefault();
    MQGMO gmo = MqgmoDefault();
    MQLONG length = 0;
    MQLONG compCode = 0;
    MQLONG reason = 0;
    while (state.KeepRunning()) {
        get(1, 1, &md, &gmo, sizeof buffer, buffer, &length, &compCode, &reason);
        benchmark::DoNotOptimize(buffer);
    }
    TellRates(state);
}

void Read(benchmark::State& state) {
    ChooseSize(state);
    StartLoad(kKeywords);
    while (state.KeepRunning())
        benchmark::DoNotOptimize(ReadOne());
    EndLoad();
    TellRates(state);
}

void FloorGetSave(benchmark::State& state) {
    ChooseSize(state);
    const auto get = Find<decltype(&MQGET)>("MQGET");
    const auto commit = Find<decltype(&MQCMIT)>("MQCMIT");
    static char buffer[8 + kLargestMessage];
    const int file = open(kFloorFile, O_CREAT | O_TRUNC | O_WRONLY, 0600);
    MQMD md = MqmdDefault();
    MQGMO gmo = MqgmoDefault();
    MQLONG length = 0;
    MQLONG compCode = 0;
    MQLONG reason = 0;
    std::int64_t left = RecordsPerFile(state);
    while (state.KeepRunning()) {
        if (--left == 0) {
            left = RecordsPerFile(state);
            if (ftruncate(file, 0) != 0 || lseek(file, 0, SEEK_SET) != 0) state.SkipWithError("truncate");
        }
        get(1, 1, &md, &gmo, kLargestMessage, buffer + 8, &length, &compCode, &reason);
        const std::int64_t lengthWord = length;
        std::memcpy(buffer, &lengthWord, sizeof lengthWord);
        const auto bytes = static_cast<std::size_t>(length) + sizeof lengthWord;
        if (write(file, buffer, bytes) != static_cast<ssize_t>(bytes)) state.SkipWithError("write");
        commit(1, &compCode, &reason);
    }
    close(file);
    unlink(kFloorFile);
    TellRates(state);
}

void ReadCheckpointed(benchmark::State& state) {
    ChooseSize(state);
    StartLoad(std::string(kKeywords) + " -CKFILE read_bench.dat");
    RequestCheckpoint();
    std::int64_t left = RecordsPerFile(state);
    while (state.KeepRunning()) {
        if (--left == 0) {
            left = RecordsPerFile(state);
            RequestCheckpoint();
        }
        benchmark::DoNotOptimize(ReadOne());
    }
    EndLoad();
    TellRates(state);
}

BENCHMARK(FloorGet)->Arg(100)->Arg(1024)->Arg(32768);
BENCHMARK(Read)->Arg(100)->Arg(1024)->Arg(32768);
BENCHMARK(FloorGetSave)->Arg(100)->Arg(1024)->Arg(32768);
BENCHMARK(ReadCheckpointed)->Arg(100)->Arg(1024)->Arg(32768);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    // The module prints its report on standard output at each Open. That output is discarded; the results go
    // to the original standard output through a stream of their own.
    std::ofstream results("/proc/self/fd/" + std::to_string(dup(STDOUT_FILENO)));
    if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
    LoadModule(MODULE_FILE, MEMORY_MQ_FILE);
    library = dlopen(MEMORY_MQ_FILE, RTLD_NOW);
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
    reporter.SetOutputStream(&results);
    reporter.SetErrorStream(&results);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
