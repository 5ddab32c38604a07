// MQCMIT and MQBACK.
#include "spoolmq/mqi/verb_frame.h"

namespace spoolmq {

namespace {

Outcome BackOut(Connection* connection) {
    std::string why;
    connection->isDoomed = false;
    if (BackOutStore(connection->store.get(), &why) == StoreStatus::Ok) return kOk;
    NoteProblem(why);
    return Failed(mqi::MQRC_RESOURCE_PROBLEM);
}

Outcome CommitCall(MQHCONN handle) {
    EnteredConnection entered;
    Outcome outcome = EnterConnection(handle, &entered);
    if (outcome.compCode == MQCC_OK) outcome = CheckQueueManager(entered.connection.get(), false);
    if (outcome.compCode != MQCC_OK) return outcome;
    Connection* connection = entered.connection.get();
    if (connection->isDoomed) {
        outcome = BackOut(connection);
        return outcome.compCode == MQCC_OK ? Warning(mqi::MQRC_BACKED_OUT) : outcome;
    }
    std::string why;
    if (CommitStore(connection->store.get(), &why) == StoreStatus::Ok) return kOk;
    NoteProblem(why);
    return Failed(mqi::MQRC_RESOURCE_PROBLEM);
}

Outcome BackOutCall(MQHCONN handle) {
    EnteredConnection entered;
    Outcome outcome = EnterConnection(handle, &entered);
    if (outcome.compCode == MQCC_OK) outcome = CheckQueueManager(entered.connection.get(), false);
    return outcome.compCode == MQCC_OK ? BackOut(entered.connection.get()) : outcome;
}

}  // namespace
}  // namespace spoolmq

using namespace spoolmq;

SPOOLMQ_EXPORT void MQCMIT(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    RunVerb(Verb::Mqcmit, Hconn, CompCode, Reason, [&] { return CommitCall(Hconn); });
}

SPOOLMQ_EXPORT void MQBACK(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    RunVerb(Verb::Mqback, Hconn, CompCode, Reason, [&] { return BackOutCall(Hconn); });
}
