// SPDX-License-Identifier: Apache-2.0
#include "mqi/mqi.h"
#include "tests/mqi/mqi_facts.h"

namespace {

// Names each default value as the list of facts names its structure.
constexpr MQCNO kMQCNO = MqcnoDefault();
constexpr MQCD kMQCD = MqcdClientConnDefault();
constexpr MQOD kMQOD = MqodDefault();
constexpr MQMD kMQMD = MqmdDefault();
constexpr MQGMO kMQGMO = MqgmoDefault();

}  // namespace

#define SIZE(structure, version) {"size of " #structure, std::to_string(sizeof(structure))},
#define FIELD(structure, field) \
    {#structure "." #field, FieldFact(offsetof(structure, field), sizeof(structure::field))},
#define DEFAULT(structure) {#structure "_DEFAULT", BytesFact(&k##structure, sizeof(structure))},
#define CONSTANT(name) {#name, std::to_string(name)},
#define VERB(name) {#name, SignatureFact(static_cast<decltype(&(name))>(nullptr))},

std::vector<MqiFact> OurMqiFacts() {
    return {
#include "tests/mqi/mqi_facts.inc"
    };
}
