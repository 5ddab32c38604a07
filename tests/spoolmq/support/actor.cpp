// SPDX-License-Identifier: Apache-2.0

// A program that the tests start as another client. It carries out the steps on its command line, one after
// the other, and does not disconnect at its end.
//
//     spoolmq_actor LOGFILE STEP...
//
//     connect QM          MQCONN
//     open QUEUE OPTIONS  MQOPEN with this sum of options
//     put TEXT N          puts N messages: TEXT-0, TEXT-1, ...
//     put-sync TEXT N     does the same under syncpoint
//     get N, get-sync N   makes N gets and logs each body as "got BODY"
//     consume BATCH       gets under syncpoint and commits every BATCH messages, until there are none for 2 s.
//                         It logs "try BODY" before each commit and "ok BODY" after it
//     commit, back, disc  MQCMIT, MQBACK, MQDISC
//     say TEXT            logs TEXT
//     hold                sleeps until it is killed
//
// A call that fails is logged as "VERB CC/RC" and does not end the program; one that works is not logged.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <thread>
#include <vector>

#include "tests/spoolmq/support/mq_client.h"

namespace {

struct Actor {
    std::FILE* log = nullptr;
    MQHCONN connection = -1;
    MQHOBJ object = -1;
};

/// Logs a line and flushes it, so that a kill does not lose it.
void Log(const Actor& actor, const std::string& line) {
    std::fputs((line + '\n').c_str(), actor.log);
    std::fflush(actor.log);
}

bool Check(const Actor& actor, const std::string& verb, const Codes& codes) {
    if (codes == kDone) {
        return true;
    }
    std::ostringstream line;
    line << verb << ' ' << codes;
    Log(actor, line.str());
    return false;
}

void PutMany(const Actor& actor, const std::string& text, int count, MQLONG options) {
    for (int i = 0; i < count; ++i) {
        Check(actor, "MQPUT", Put(actor.connection, actor.object, text + '-' + std::to_string(i), options));
    }
}

void GetMany(const Actor& actor, int count, MQLONG options) {
    for (int i = 0; i < count; ++i) {
        const Got got = Get(actor.connection, actor.object, options);
        if (Check(actor, "MQGET", got.codes)) {
            Log(actor, "got " + got.body);
        }
    }
}

void CommitBatch(const Actor& actor, std::vector<std::string>* batch) {
    for (const std::string& body : *batch) {
        Log(actor, "try " + body);
    }
    if (Check(actor, "MQCMIT", Commit(actor.connection))) {
        for (const std::string& body : *batch) {
            Log(actor, "ok " + body);
        }
    }
    batch->clear();
}

void Consume(const Actor& actor, std::size_t batchSize) {
    std::vector<std::string> batch;
    for (;;) {
        mqi::MQGMO gmo = NewGmo(kSync | kWait);
        gmo.WaitInterval = 2000;
        const Got got = GetWith(actor.connection, actor.object, NewMd(), gmo);
        if (got.codes != kDone) {
            break;
        }
        batch.push_back(got.body);
        if (batch.size() == batchSize) {
            CommitBatch(actor, &batch);
        }
    }
    CommitBatch(actor, &batch);
}

/// Carries out the step at arguments[at] and returns how many arguments it had.
int Act(Actor* actor, char** arguments) {
    const std::string step = arguments[0];
    if (step == "connect") {
        return Check(*actor, "MQCONN", Connect(arguments[1], &actor->connection)), 2;
    }
    if (step == "open") {
        Check(*actor, "MQOPEN",
              Open(actor->connection, arguments[1], std::atoi(arguments[2]), &actor->object));
        return 3;
    }
    if (step == "put") {
        return PutMany(*actor, arguments[1], std::atoi(arguments[2]), kNoSync), 3;
    }
    if (step == "put-sync") {
        return PutMany(*actor, arguments[1], std::atoi(arguments[2]), kSync), 3;
    }
    if (step == "get") {
        return GetMany(*actor, std::atoi(arguments[1]), kNoSync), 2;
    }
    if (step == "get-sync") {
        return GetMany(*actor, std::atoi(arguments[1]), kSync), 2;
    }
    if (step == "consume") {
        return Consume(*actor, static_cast<std::size_t>(std::atoi(arguments[1]))), 2;
    }
    if (step == "commit") {
        return Check(*actor, "MQCMIT", Commit(actor->connection)), 1;
    }
    if (step == "back") {
        return Check(*actor, "MQBACK", BackOut(actor->connection)), 1;
    }
    if (step == "disc") {
        return Check(*actor, "MQDISC", Disconnect(&actor->connection)), 1;
    }
    if (step == "say") {
        return Log(*actor, arguments[1]), 2;
    }
    if (step == "hold") {
        for (;;) {
            std::this_thread::sleep_for(std::chrono::seconds(1));
        }
    }
    std::fprintf(stderr, "spoolmq_actor: unknown step %s\n", step.c_str());
    std::exit(99);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return 99;
    }
    Actor actor;
    actor.log = std::fopen(argv[1], "ab");
    if (actor.log == nullptr) {
        return 98;
    }
    for (int at = 2; at < argc;) {
        at += Act(&actor, argv + at);
    }
    return 0;
}
