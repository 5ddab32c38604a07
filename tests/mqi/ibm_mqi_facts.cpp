// SPDX-License-Identifier: Apache-2.0

// cmqc.h comes first: it declares what cmqxc.h uses.
#include <cmqc.h>

#include <cmqxc.h>

#include "tests/mqi/mqi_facts.h"

namespace {

// IBM's initialisers extend to the newest version of a structure. Only the bytes up to our version are
// compared.
const MQCNO kMQCNO = {MQCNO_DEFAULT};
const MQCD kMQCD = {MQCD_CLIENT_CONN_DEFAULT};
const MQOD kMQOD = {MQOD_DEFAULT};
const MQMD kMQMD = {MQMD_DEFAULT};
const MQGMO kMQGMO = {MQGMO_DEFAULT};

// The version up to which each structure is declared.
constexpr std::size_t kMQCNOBytes = MQCNO_LENGTH_2;
constexpr std::size_t kMQCDBytes = MQCD_LENGTH_6;
constexpr std::size_t kMQODBytes = MQOD_LENGTH_1;
constexpr std::size_t kMQMDBytes = MQMD_LENGTH_1;
constexpr std::size_t kMQGMOBytes = MQGMO_LENGTH_1;

}  // namespace

#define SIZE(structure, version) {"size of " #structure, std::to_string(structure##_LENGTH_##version)},
#define FIELD(structure, field) \
    {#structure "." #field, FieldFact(offsetof(structure, field), sizeof(structure::field))},
#define DEFAULT(structure) {#structure "_DEFAULT", BytesFact(&k##structure, k##structure##Bytes)},
#define CONSTANT(name) {#name, std::to_string(name)},
#define VERB(name) {#name, SignatureFact(static_cast<decltype(&(name))>(nullptr))},

std::vector<MqiFact> IbmMqiFacts() {
    return {
#include "tests/mqi/mqi_facts.inc"
    };
}
