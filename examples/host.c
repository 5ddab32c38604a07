/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A complete host in C99: loads a queue into a file, one line per record, and resumes after a crash.
 *
 *   host ./libmqamod.so "-QMGR QM1 -QNM ORDERS" orders.ckpt orders.state orders.txt 1000
 *
 * Run it until it exits with 0: 9 says that there may be more, 2 that it failed. The rules are in mqamod.h,
 * RESTARTABLE LOADS. A real host also locks its files, and syncs the directories of new ones.
 */
#define _POSIX_C_SOURCE 200809L
#include "mqamod.h"
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#ifdef _WIN32
#include <io.h>
#include <windows.h>
#define getpid() (int)GetCurrentProcessId()
#define Seek _fseeki64
#define Tell _ftelli64
#define SyncHandle(file) _commit(_fileno(file))
#define CutHandle(file, bytes) _chsize_s(_fileno(file), bytes)
#define FindEntryPoint(path) (void *)(intptr_t)GetProcAddress(LoadLibraryA(path), "PIDMMain")
#else
#include <dlfcn.h>
#include <unistd.h>
#define Seek fseeko
#define Tell ftello
#define SyncHandle(file) fsync(fileno(file))
#define CutHandle(file, bytes) ftruncate(fileno(file), bytes)
#define FindEntryPoint(path) dlsym(dlopen(path, RTLD_NOW), "PIDMMain")
#endif
#define OPTIONS "-RWAIT 1 -MQEX -TDM yes"
static struct { /* each checkpoint appends this to the state file; the last complete one counts */
    PositionData position;
    int64_t targetBytes; /* durable in the target: an attempt first cuts the target back to it */
    int64_t recordBytes; /* the length of the last record in the target */
    int64_t endedAt;     /* size of the target when the attempt met the end of the queue, or -1 */
    int64_t process;     /* names the temporary checkpoint file that this attempt may leave */
} state;
static FILE *stateFile, *target;
static PIDMMainFunction pidmMain;
static RequestBlock request;
/* Unless the condition holds, ends the process at once, without Close: the next attempt repeats the rest. */
static void Require(int condition, const char *what) {
    if (condition) return;
    fprintf(stderr, "host: error %s\n%s", what, request.ErrorText ? request.ErrorText : "");
    _Exit(2);
}
static ReturnCode Call(uint32_t option, void *block) {
    request.OptCode = option;
    pidmMain(&request, block);
    return (ReturnCode)request.ReturnCode;
}
static int64_t SizeOf(FILE *file) { return Seek(file, 0, SEEK_END) == 0 ? (int64_t)Tell(file) : -1; }
static void Sync(FILE *file) { Require(fflush(file) == 0 && SyncHandle(file) == 0, "syncing a file"); }
static void StoreState(void) {
    Require(fwrite(&state, sizeof state, 1, stateFile) == 1, "writing the state file");
    Sync(stateFile);
}
static void TakeCheckpoint(int64_t targetBytes, int64_t recordBytes) {
    PositionBlock block = {.position = NULL};
    Require(Call(pmiPIDMOptGetPos, &block) == pmrcOK && block.position != NULL, "in GetPos");
    memcpy(&state.position, block.position, sizeof state.position);
    state.targetBytes = targetBytes;
    state.recordBytes = recordBytes;
    state.endedAt = -1;
    state.process = getpid();
    Sync(target); /* must come before the position that covers it is stored */
    StoreState();
}
/* Completes what a crash interrupted. Returns whether the file has a complete record to resume from. */
static int RepairCheckpointFile(const char *path, int resumes) {
    char temporary[4096];
    size_t directory = strlen(path);
    while (directory > 0 && path[directory - 1] != '/' && path[directory - 1] != '\\') --directory;
    snprintf(temporary, sizeof temporary, "%.*sMQAMtmp.%ld", (int)directory, path, (long)state.process);
    FILE *file = fopen(path, "rb+");
    if (file == NULL && !resumes) return 0;
    if (file != NULL) remove(temporary); /* the checkpoint file contains all of its records */
    else if (rename(temporary, path) == 0) file = fopen(path, "rb+");
    Require(file != NULL, "finding the checkpoint file");
    const uint64_t size = (uint64_t)SizeOf(file);
    uint64_t length = 0, complete = 4; /* 4 bytes, then records: a length of 8 bytes and that many bytes */
    while (Seek(file, (int64_t)complete, SEEK_SET) == 0 && fread(&length, 8, 1, file) == 1 && length <= size &&
           complete + 8 + length <= size)
        complete += 8 + length;
    Require(complete <= 4 || CutHandle(file, (int64_t)complete) == 0, "cutting the checkpoint file");
    fclose(file);
    return complete > 4;
}
static void Initialize(const char *keywords, const char *checkpointPath) {
    struct { AttributeBlock block; char rest[2]; } preserve =
        {{.name = "PRESERVE_RESTART_INFO", .valueLength = 3, .value = "Y"}, "ES"};
    char text[8192];
    InitBlock init = {.firstVersion = MQAMOD_FIRST_INTERFACE_VERSION, .initString = text};
    init.secondVersion = MQAMOD_SECOND_INTERFACE_VERSION;
    init.initStringLength = snprintf(text, sizeof text, "%s -CKFILE %s " OPTIONS, keywords, checkpointPath);
    Require(Call(pmiPIDMOptInit, &init) == pmrcOK && Call(pmiPIDMOptPutAttr, &preserve) == pmrcOK, "in Init");
}
int main(int argc, char **argv) {
    Require(argc == 7, "in the arguments: MODULE KEYWORDS CHECKPOINT_FILE STATE_FILE TARGET EVERY");
    *(void **)&pidmMain = FindEntryPoint(argv[1]);
    Require(pidmMain != NULL, "loading the module");
    Require((stateFile = fopen(argv[4], "ab+")) && (target = fopen(argv[5], "ab+")), "opening the files");
    const int64_t states = SizeOf(stateFile) / (int64_t)sizeof state;
    Require(CutHandle(stateFile, states * (int64_t)sizeof state) == 0, "cutting the state file");
    Seek(stateFile, (states - 1) * (int64_t)sizeof state, SEEK_SET);
    Require(states == 0 || fread(&state, sizeof state, 1, stateFile) == 1, "reading the state file");
    Seek(stateFile, 0, SEEK_END);
    const int replays = RepairCheckpointFile(argv[3], states > 0);
    Require(states > 0 ? SizeOf(target) >= state.targetBytes : !replays && SizeOf(target) == 0, "with the files");
    Require(CutHandle(target, state.targetBytes) == 0, "cutting the target");
    Initialize(argv[2], argv[3]);
    OpenBlock open = {.openMode = MQAMOD_OPEN_FOR_READING};
    Require(Call(pmiPIDMOptOpen, &open) == pmrcOK, "in Open");
    char *record = malloc(open.maxRecordBytes), *last = malloc(open.maxRecordBytes);
    Require(record != NULL && last != NULL, "allocating the buffers");
    int64_t length = state.targetBytes, sinceCheckpoint = 0, endedBefore = states > 0 ? state.endedAt : -1;
    PositionBlock stored = {.positionLength = MQAMOD_POSITION_BYTES, .position = &state.position};
    if (!replays) TakeCheckpoint(length, state.recordBytes);
    else Require(Call(pmiPIDMOptSetPos, &stored) == pmrcOK, "in SetPos");
    ReadBlock read = {.recordBuffer = record};
    time_t start = time(NULL);
    ReturnCode rc;
    for (int isFirst = replays; (rc = Call(pmiPIDMOptRead, &read)) == pmrcOK; start = time(NULL)) {
        const uint32_t bytes = read.recordLength;
        if (bytes == 0) continue; /* a checkpoint during a replay wrote this; it is not from the queue */
        if (isFirst && state.position.CkPtMsgCount != 0) { /* the last one loaded: it is compared, not written */
            Require(bytes == state.recordBytes && Seek(target, length - 1 - bytes, SEEK_SET) == 0, "comparing");
            Require(fread(last, bytes, 1, target) == 1 && memcmp(last, record, bytes) == 0, "comparing");
            Seek(target, 0, SEEK_END);
        } else {
            Require(fwrite(record, bytes, 1, target) == 1 && putc('\n', target) != EOF, "writing the target");
            length += bytes + 1;
            ++sinceCheckpoint;
        }
        if (!isFirst && sinceCheckpoint < atol(argv[6])) continue;
        TakeCheckpoint(length, bytes);
        isFirst = sinceCheckpoint = 0;
    }
    const int waited = time(NULL) - start > 1; /* longer than RWAIT */
    Require(rc == pmrcEOF && Call(pmiPIDMOptClose, NULL) == pmrcOK, "in Read or Close");
    Sync(target);
    state.endedAt = length;
    StoreState();
    return waited && endedBefore == length ? 0 : 9; /* done: nothing came since the previous attempt ended */
}
