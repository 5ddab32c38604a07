// SPDX-License-Identifier: Apache-2.0
#include "tests/support/fault_plan.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <functional>

#include "platform/library.h"
#include "tests/support/c_library.h"

namespace {

FaultPlan* plan = nullptr;

std::string NameOf(std::FILE* stream) {
    const auto found = plan->streams.find(stream);
    return found == plan->streams.end() ? "" : found->second;
}

void Log(const std::string& call, std::FILE* stream, const std::string& more = "") {
    const std::string name = NameOf(stream);
    if (!name.empty()) plan->Note(call + " " + name + more);
}

void Fail(const Fault& fault, std::FILE* stream) {
    if (stream != nullptr && fault.streamError) SetStreamError(stream);
    errno = fault.error;
}

std::FILE* FaultyOpen(const char* path, const char* mode) {
    plan->Note("open " + std::string(path) + " " + mode);
    if (const Fault* fault = plan->Strike(FileCall::Open, path)) {
        errno = fault->error;
        return nullptr;
    }
    std::FILE* stream = plan->opener ? plan->opener(path, mode) : std::fopen(path, mode);
    if (stream != nullptr) plan->streams[stream] = path;
    return stream;
}

int FaultyClose(std::FILE* stream) {
    Log("close", stream);
    const Fault* fault = plan->Strike(FileCall::Close, NameOf(stream));
    plan->streams.erase(stream);
    const int result = std::fclose(stream);
    if (fault == nullptr) return result;
    errno = fault->error;
    return EOF;
}

std::size_t FaultyRead(void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    Log("read", stream, " " + std::to_string(size * count));
    if (const Fault* fault = plan->Strike(FileCall::Read, NameOf(stream))) {
        const std::size_t done = std::fread(buffer, 1, std::min(fault->transferred, size * count), stream);
        std::clearerr(stream);  // a read that fails does not report the end of the file
        Fail(*fault, stream);
        return done / size;
    }
    return std::fread(buffer, size, count, stream);
}

std::size_t FaultyWrite(const void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    Log("write", stream, " " + std::to_string(size * count));
    if (const Fault* fault = plan->Strike(FileCall::Write, NameOf(stream))) {
        const std::size_t done = std::fwrite(buffer, 1, std::min(fault->transferred, size * count), stream);
        Fail(*fault, stream);
        return done / size;
    }
    return std::fwrite(buffer, size, count, stream);
}

int FlushAllStreams() {
    if (plan->hook) plan->hook("flush all");
    plan->flushingAll = true;
    const int result = std::fflush(nullptr);
    plan->flushingAll = false;
    for (const auto& [stream, name] : plan->streams) {
        if (const Fault* fault = plan->Strike(FileCall::FlushAll, name)) Fail(*fault, stream);
    }
    return result;
}

int FaultyFlush(std::FILE* stream) {
    if (stream == nullptr) return FlushAllStreams();
    Log("flush", stream);
    if (const Fault* fault = plan->Strike(FileCall::Flush, NameOf(stream))) {
        Fail(*fault, stream);
        return EOF;
    }
    return std::fflush(stream);
}

[[gnu::format(printf, 2, 3)]] int FaultyPrint(std::FILE* stream, const char* format, ...) {
    if (const Fault* fault = plan->Strike(FileCall::Print, NameOf(stream))) {
        Fail(*fault, stream);
        return -1;
    }
    va_list arguments;
    va_start(arguments, format);
    const int printed = std::vfprintf(stream, format, arguments);
    va_end(arguments);
    return printed;
}

[[gnu::format(printf, 1, 2)]] int FaultyReport(const char* format, ...) {
    if (plan->silent) return 0;
    va_list arguments;
    va_start(arguments, format);
    const int printed = std::vprintf(format, arguments);
    va_end(arguments);
    return printed;
}

int FaultyPutText(const char* text, std::FILE* stream) {
    if (plan->silent && stream == stdout) return 0;
    if (const Fault* fault = plan->Strike(FileCall::Print, NameOf(stream))) {
        Fail(*fault, stream);
        return EOF;
    }
    return std::fputs(text, stream);
}

/// On Windows, formatted text reaches the stream as single characters. A fault strikes only at the first
/// character of a line.
int FaultyPutCharacter(int character, std::FILE* stream) {
    if (plan->silent && stream == stdout) return character;
    static bool lineBegins = true;
    const bool strikes = lineBegins && !NameOf(stream).empty();
    if (!NameOf(stream).empty()) lineBegins = character == '\n';
    const Fault* fault = strikes ? plan->Strike(FileCall::Print, NameOf(stream)) : nullptr;
    if (fault == nullptr) return std::fputc(character, stream);
    Fail(*fault, stream);
    return EOF;
}

char* FaultyGetLine(char* buffer, int bytes, std::FILE* stream) {
    Log("read", stream, " line");
    if (const Fault* fault = plan->Strike(FileCall::Read, NameOf(stream))) {
        Fail(*fault, stream);
        return nullptr;
    }
    return std::fgets(buffer, bytes, stream);
}

using TellFunction = std::int64_t (*)(std::FILE*);
using SeekFunction = int (*)(std::FILE*, std::int64_t, int);
using GetPositionFunction = int (*)(std::FILE*, std::fpos_t*);
using SetPositionFunction = int (*)(std::FILE*, const std::fpos_t*);
using PathFunction = int (*)(const char*);
using RenameFunction = int (*)(const char*, const char*);
TellFunction realTell = nullptr;
SeekFunction realSeek = nullptr;
PathFunction realRemove = nullptr;

std::int64_t FaultyTell(std::FILE* stream) {
    Log("tell", stream);
    if (const Fault* fault = plan->Strike(FileCall::Tell, NameOf(stream))) {
        Fail(*fault, stream);
        return -1;
    }
    return realTell(stream);
}

int FaultySeek(std::FILE* stream, std::int64_t offset, int whence) {
    Log("seek", stream, " " + std::to_string(offset));
    if (const Fault* fault = plan->Strike(FileCall::Seek, NameOf(stream))) {
        Fail(*fault, stream);
        return -1;
    }
    return realSeek(stream, offset, whence);
}

int FaultyGetPosition(std::FILE* stream, std::fpos_t* position) {
    Log("tell", stream);
    if (const Fault* fault = plan->Strike(FileCall::Tell, NameOf(stream))) {
        Fail(*fault, stream);
        return -1;
    }
    return std::fgetpos(stream, position);
}

int FaultySetPosition(std::FILE* stream, const std::fpos_t* position) {
    std::int64_t offset = 0;
    static_assert(sizeof *position >= sizeof offset);
    std::copy_n(reinterpret_cast<const char*>(position), sizeof offset, reinterpret_cast<char*>(&offset));
    Log("seek", stream, " " + std::to_string(offset));
    if (const Fault* fault = plan->Strike(FileCall::Seek, NameOf(stream))) {
        Fail(*fault, stream);
        return -1;
    }
    return std::fsetpos(stream, position);
}

void LoggedRewind(std::FILE* stream) {
    Log("rewind", stream);
    std::rewind(stream);
}

/// Returns the result of a call that takes names. A fault makes the call report failure, whether it was
/// carried out or not.
int FailNamed(const Fault& fault, const std::function<int()>& call) {
    if (fault.carriedOut) call();
    errno = fault.error;
    return -1;
}

int FaultyRemove(const char* path) {
    plan->Note("remove " + std::string(path));
    const Fault* fault = plan->Strike(FileCall::Remove, path);
    return fault == nullptr ? realRemove(path) : FailNamed(*fault, [&] { return realRemove(path); });
}

int FaultyRename(const char* from, const char* to) {
    plan->Note("rename " + std::string(from) + " " + to);
    const Fault* fault = plan->Strike(FileCall::Rename, from);
    return fault == nullptr ? std::rename(from, to)
                            : FailNamed(*fault, [&] { return std::rename(from, to); });
}

int FaultyCommand(const char* command) {
    plan->Note("command " + std::string(command));
    const Fault* fault = plan->Strike(FileCall::Command, command);
    return fault == nullptr ? std::system(command) : FailNamed(*fault, [&] { return std::system(command); });
}

void* FaultyAllocate(std::size_t bytes) {
    if (const Fault* fault = plan->Strike(FileCall::Allocate, "", bytes)) {
        errno = fault->error;
        return nullptr;
    }
    return std::malloc(bytes);
}

void* FaultyAllocateCleared(std::size_t count, std::size_t size) {
    if (const Fault* fault = plan->Strike(FileCall::Allocate, "", count * size)) {
        errno = fault->error;
        return nullptr;
    }
    return std::calloc(count, size);
}

}  // namespace

FaultPlan::FaultPlan(platform::LibraryHandle module) {
    plan = this;
    const auto add = [&](std::initializer_list<const char*> names, void* replacement) {
        patches_.push_back(std::make_unique<ImportPatch>(module, names, replacement));
        return patches_.back()->Original();
    };
    add({"fopen", "fopen64"}, AddressOf(&FaultyOpen));
    add({"fclose"}, AddressOf(&FaultyClose));
    add({"fread"}, AddressOf(&FaultyRead));
    add({"fwrite"}, AddressOf(&FaultyWrite));
    add({"fflush"}, AddressOf(&FaultyFlush));
    add({"fgets"}, AddressOf(&FaultyGetLine));
    add({"fprintf"}, AddressOf(&FaultyPrint));
    add({"printf"}, AddressOf(&FaultyReport));
    add({"fputs"}, AddressOf(&FaultyPutText));
    add({"fputc"}, AddressOf(&FaultyPutCharacter));
    realTell =
        reinterpret_cast<TellFunction>(add({"ftello", "ftello64", "_ftelli64"}, AddressOf(&FaultyTell)));
    realSeek =
        reinterpret_cast<SeekFunction>(add({"fseeko", "fseeko64", "_fseeki64"}, AddressOf(&FaultySeek)));
    add({"fgetpos"}, AddressOf(&FaultyGetPosition));
    add({"fsetpos"}, AddressOf(&FaultySetPosition));
    add({"rewind"}, AddressOf(&LoggedRewind));
    realRemove =
        reinterpret_cast<PathFunction>(add({"remove", "unlink", "_unlink"}, AddressOf(&FaultyRemove)));
    add({"rename"}, AddressOf(&FaultyRename));
    add({"system"}, AddressOf(&FaultyCommand));
    add({"malloc"}, AddressOf(&FaultyAllocate));
    add({"calloc"}, AddressOf(&FaultyAllocateCleared));
}

FaultPlan::~FaultPlan() {
    patches_.clear();
    plan = nullptr;
}

void FaultPlan::Note(const std::string& call) {
    log.push_back(call);
    if (hook) hook(call);
}

void FaultPlan::AbandonStreams() {
    for (const auto& [stream, name] : streams)
        AbandonStream(stream);
    streams.clear();
}

Fault* FaultPlan::Strike(FileCall call, const std::string& subject, std::size_t bytes) {
    if (!subject.empty()) points.push_back({call, subject});
    for (auto fault = faults_.begin(); fault != faults_.end(); ++fault) {
        if (fault->call != call || (call == FileCall::Allocate && fault->bytes != bytes)) continue;
        if (subject.find(fault->file) == std::string::npos || --fault->nth > 0) continue;
        ++struck_;
        if (onStrike) onStrike(call, subject);
        last_ = *fault;
        if (!fault->stays) faults_.erase(fault);
        return &last_;
    }
    return nullptr;
}

std::vector<std::string> FaultPlan::LogWithout(const std::string& text) const {
    std::vector<std::string> rest;
    std::copy_if(log.begin(), log.end(), std::back_inserter(rest),
                 [&](const std::string& entry) { return entry.find(text) == std::string::npos; });
    return rest;
}
