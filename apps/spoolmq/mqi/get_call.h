// SPDX-License-Identifier: Apache-2.0

// Keeps the parameters of one MQGET, and checks them before a message is looked for.
#pragma once

#include "spoolmq/mqi/verb_frame.h"

namespace spoolmq {

// These are the options of a get at the browse cursor.
inline constexpr MQLONG kCursorOptions = mqi::MQGMO_MSG_UNDER_CURSOR | mqi::MQGMO_BROWSE_MSG_UNDER_CURSOR;

/// The caller's parameters, as pointers to the caller's memory.
struct GetCall {
    void* md;
    void* gmo;
    MQLONG bufferLength;
    void* buffer;
    MQLONG* dataLength;
};

/// A get in progress: copies of the caller's structures, and what they mean.
struct GetState {
    Connection* connection = nullptr;
    OpenObject* object = nullptr;
    mqi::MQMD md{};
    mqi::MQGMO gmo{};
    Selection selection;
    bool isBrowse = false;
};

[[nodiscard]] inline bool Has(const GetState& get, MQLONG option) {
    return (get.gmo.Options & option) != 0;
}

/// Copies the caller's structures and checks the parameters that do not depend on the object.
[[nodiscard]] Outcome CheckCall(const GetCall& call, GetState& get);
/// Checks that the object is open for this kind of get, and sets isBrowse.
[[nodiscard]] Outcome CheckObject(GetState& get);
/// Sets the selection to the identifiers that the caller wants to match. It points into `get`.
void SetSelection(GetState& get);

}  // namespace spoolmq
