// SPDX-License-Identifier: Apache-2.0

// Declares the stand-in MQ library that the module loads in a test. It has IBM's entry points, and passes
// each call on to the test program (mqi_double.h), which hands its functions over through SetMqDouble.
#pragma once

#include "mqi/mqi.h"

struct MqDoubleFunctions {
    decltype(&MQCONNX) Connx;
    decltype(&MQOPEN) Open;
    decltype(&MQGET) Get;
    decltype(&MQCMIT) Cmit;
    decltype(&MQBACK) Back;
    decltype(&MQCLOSE) Close;
    decltype(&MQDISC) Disc;
};

/// The library exports this as "SetMqDouble". The table must outlive every call of a verb.
using SetMqDoubleFunction = void (*)(const MqDoubleFunctions* functions);
