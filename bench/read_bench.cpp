// SPDX-License-Identifier: Apache-2.0

// Measures what the module costs for each record, compared with the least that it could cost. All benchmarks run in
// one process, with an MQ library that answers from memory.
//
//   FloorGet           MQGET alone, which every reader needs
//   Read               the module's Read without checkpoints
//   FloorCheckpointed  MQGET, fgetpos, fwrite of length and record, fflush and MQCMIT: the calls that keep a message
//                      safe, and that the module must make in this order
//   ReadCheckpointed   the module's Read after a checkpoint
//   FloorReplay        fgetpos, and an fread of the length and of the record
//   Replay             the module's Read after SetPos
//
// The files are in the current directory. They are rewritten after every 64 MB, so that they stay in the page
// cache.
//   read_bench [--benchmark_...]
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "bench/memory_mq.h"
#include "bench/module_host.h"
#include "mqi/mqi.h"

namespace {

constexpr std::int64_t kFileBytes = 64 << 20;
constexpr std::size_t kLengthBytes = 8;
constexpr std::int32_t kFirstSequence = 1;
constexpr char kFloorFile[] = "read_bench_floor.dat";
constexpr char kCheckpointFile[] = "read_bench.dat";
constexpr char kKeywords[] = "-QMGR QM1 -QNM Q1 -TLF NO -BKSZ 1048576";

void* library;
// A length and a record, as the checkpoint file contains them.
std::vector<char> recordImage(kLengthBytes + kLargestMessage);
// The buffer of the floor file's stream, as large as the one that the module gives its checkpoint file.
char streamBuffer[65536];

template <typename Function>
Function Find(const char* name) {
    return reinterpret_cast<Function>(dlsym(library, name));
}

void ChooseSize(const benchmark::State& state) {
    Find<SetMessageBytesFunction>("SetMessageBytes")(static_cast<std::size_t>(state.range(0)));
}

void CountRecords(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

// Returns the number of records of that size that fit into a file before it is rewritten.
std::int64_t RecordsPerFile(const benchmark::State& state) {
    return kFileBytes / (state.range(0) + static_cast<std::int64_t>(kLengthBytes)) + 1;
}

std::FILE* OpenFloorFile(const char* mode) {
    std::FILE* file = std::fopen(kFloorFile, mode);
    if (file != nullptr) (void)std::setvbuf(file, streamBuffer, _IOFBF, sizeof streamBuffer);
    return file;
}

// Writes a file with the layout of a checkpoint file. Returns whether that succeeded.
bool WriteFloorFile(std::int64_t records, std::int64_t recordBytes) {
    std::FILE* file = std::fopen(kFloorFile, "wb");
    if (file == nullptr) return false;
    std::memcpy(recordImage.data(), &recordBytes, kLengthBytes);
    const std::size_t bytes = kLengthBytes + static_cast<std::size_t>(recordBytes);
    bool written = std::fwrite(&kFirstSequence, sizeof kFirstSequence, 1, file) == 1;
    for (std::int64_t i = 0; i < records && written; ++i)
        written = std::fwrite(recordImage.data(), bytes, 1, file) == 1;
    return std::fclose(file) == 0 && written;
}

/// Makes the MQ calls of the Floor benchmarks, without the module.
class Floor {
  public:
    /// Gets a message into the place of the record in recordImage. Returns its length.
    std::int64_t Get() {
        get_(1, 1, &md_, &gmo_, static_cast<MQLONG>(kLargestMessage), recordImage.data() + kLengthBytes,
             &length_, &compCode_, &reason_);
        benchmark::DoNotOptimize(recordImage.data());
        return length_;
    }
    void Commit() { commit_(1, &compCode_, &reason_); }

  private:
    decltype(&MQGET) get_ = Find<decltype(&MQGET)>("MQGET");
    decltype(&MQCMIT) commit_ = Find<decltype(&MQCMIT)>("MQCMIT");
    MQMD md_ = MqmdDefault();
    MQGMO gmo_ = MqgmoDefault();
    MQLONG length_ = 0;
    MQLONG compCode_ = 0;
    MQLONG reason_ = 0;
};

void FloorGet(benchmark::State& state) {
    ChooseSize(state);
    Floor floor;
    while (state.KeepRunning())
        benchmark::DoNotOptimize(floor.Get());
    CountRecords(state);
}

void Read(benchmark::State& state) {
    ChooseSize(state);
    StartLoad(kKeywords);
    while (state.KeepRunning())
        benchmark::DoNotOptimize(ReadOne());
    EndLoad();
    CountRecords(state);
}

void FloorCheckpointed(benchmark::State& state) {
    ChooseSize(state);
    Floor floor;
    std::FILE* file = OpenFloorFile("wb+");
    std::int64_t left = RecordsPerFile(state);
    std::fpos_t position;
    while (state.KeepRunning()) {
        if (--left == 0) {
            left = RecordsPerFile(state);
            (void)std::fclose(file);
            file = OpenFloorFile("wb+");
        }
        const std::int64_t length = floor.Get();
        std::memcpy(recordImage.data(), &length, kLengthBytes);
        const std::size_t bytes = kLengthBytes + static_cast<std::size_t>(length);
        if (std::fgetpos(file, &position) != 0 || std::fwrite(recordImage.data(), 1, bytes, file) != bytes ||
            std::fflush(file) != 0) {
            state.SkipWithError(kFloorFile);
            break;
        }
        floor.Commit();
    }
    (void)std::fclose(file);
    unlink(kFloorFile);
    CountRecords(state);
}

void ReadCheckpointed(benchmark::State& state) {
    ChooseSize(state);
    StartLoad(std::string(kKeywords) + " -CKFILE " + kCheckpointFile);
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
    CountRecords(state);
}

void FloorReplay(benchmark::State& state) {
    const std::int64_t records = RecordsPerFile(state);
    if (!WriteFloorFile(records, state.range(0))) state.SkipWithError(kFloorFile);
    std::FILE* file = OpenFloorFile("rb+");
    std::int64_t left = 1;
    std::fpos_t position;
    std::int64_t length = 0;
    while (state.KeepRunning()) {
        if (--left == 0) {
            left = records;
            std::rewind(file);
            if (std::fread(recordImage.data(), 1, sizeof kFirstSequence, file) != sizeof kFirstSequence)
                state.SkipWithError(kFloorFile);
        }
        if (std::fgetpos(file, &position) != 0 ||
            std::fread(&length, 1, kLengthBytes, file) != kLengthBytes ||
            std::fread(recordImage.data(), static_cast<std::size_t>(length), 1, file) != 1) {
            state.SkipWithError(kFloorFile);
            break;
        }
        benchmark::DoNotOptimize(recordImage.data());
    }
    (void)std::fclose(file);
    unlink(kFloorFile);
    CountRecords(state);
}

void Replay(benchmark::State& state) {
    ChooseSize(state);
    const std::int64_t records = RecordsPerFile(state);
    StartLoad(std::string(kKeywords) + " -CKFILE " + kCheckpointFile);
    RequestCheckpoint();
    for (std::int64_t record = 0; record < records; ++record)
        (void)ReadOne();
    std::int64_t left = 1;
    while (state.KeepRunning()) {
        if (--left == 0) {
            left = records;
            GoBackToFirstCheckpoint();
        }
        benchmark::DoNotOptimize(ReadOne());
    }
    EndLoad();
    CountRecords(state);
}

void ChooseSizes(benchmark::internal::Benchmark* chosen) {
    for (const std::int64_t bytes : {100, 1024, 4096, 32768, 262144, 1048576})
        chosen->Arg(bytes);
}

BENCHMARK(FloorGet)->Apply(ChooseSizes);
BENCHMARK(Read)->Apply(ChooseSizes);
BENCHMARK(FloorCheckpointed)->Apply(ChooseSizes);
BENCHMARK(ReadCheckpointed)->Apply(ChooseSizes);
BENCHMARK(FloorReplay)->Apply(ChooseSizes);
BENCHMARK(Replay)->Apply(ChooseSizes);

}  // namespace

int main(int argc, char** argv) {
    // The module prints its report on standard output at each Open. That output is discarded; the results go to the
    // original standard output, or to the file that --benchmark_out names.
    std::ofstream results("/proc/self/fd/" + std::to_string(dup(STDOUT_FILENO)));
    benchmark::Initialize(&argc, argv);
    if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
    LoadModule(MODULE_FILE, MEMORY_MQ_FILE);
    library = dlopen(MEMORY_MQ_FILE, RTLD_NOW);
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
    reporter.SetOutputStream(&results);
    reporter.SetErrorStream(&results);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
