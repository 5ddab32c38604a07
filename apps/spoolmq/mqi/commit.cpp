// SPDX-License-Identifier: Apache-2.0

// Implements MQCMIT and MQBACK.
#include "spoolmq/mqi/verb_frame.h"

namespace spoolmq {

namespace {

Outcome ToOutcome(const Status& status) {
    if (status.IsOk()) {
        return kOk;
    }
    ReportProblem(status.error);
    return Failed(mqi::MQRC_RESOURCE_PROBLEM);
}

Outcome Commit(MQHCONN handle) {
    EnteredConnection entered;
    Outcome outcome = EnterConnection(handle, entered);
    if (outcome.compCode == MQCC_OK) {
        outcome = CheckQueueManager(*entered.connection, false);
    }
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    StoreConnection& store = *entered.connection->store;
    if (!store.unit.isRollbackOnly) {
        return ToOutcome(CommitStore(store));
    }
    outcome = ToOutcome(BackOutStore(store));
    return outcome.compCode == MQCC_OK ? Warning(mqi::MQRC_BACKED_OUT) : outcome;
}

Outcome BackOut(MQHCONN handle) {
    EnteredConnection entered;
    Outcome outcome = EnterConnection(handle, entered);
    if (outcome.compCode == MQCC_OK) {
        outcome = CheckQueueManager(*entered.connection, false);
    }
    return outcome.compCode == MQCC_OK ? ToOutcome(BackOutStore(*entered.connection->store)) : outcome;
}

}  // namespace
}  // namespace spoolmq

using namespace spoolmq;

SPOOLMQ_EXPORT void MQCMIT(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    RunVerb(Verb::kMqcmit, Hconn, CompCode, Reason, [&] { return Commit(Hconn); });
}

SPOOLMQ_EXPORT void MQBACK(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    RunVerb(Verb::kMqback, Hconn, CompCode, Reason, [&] { return BackOut(Hconn); });
}
