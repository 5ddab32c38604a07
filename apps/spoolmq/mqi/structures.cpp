// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/mqi/structures.h"

#include <array>
#include <cstring>
#include <string_view>

namespace spoolmq {

namespace {

struct StructureRule {
    std::string_view strucId;
    std::array<std::size_t, 8> lengths;  // the bytes of versions 1, 2 and so on; 0 after the last
};

constexpr StructureRule kCnoRule = {"CNO ", {12, 24, 152, 168, 200, 224, 256, 272}};
constexpr StructureRule kOdRule = {"OD  ", {168, 208, 344, 424}};
constexpr StructureRule kMdRule = {"MD  ", {324, 364}};
constexpr StructureRule kGmoRule = {"GMO ", {72, 80, 100, 112}};
constexpr StructureRule kPmoRule = {"PMO ", {128, 160, 184}};

// Returns the length of the structure's version, or 0 if the structure is not valid.
std::size_t LengthOf(const StructureRule& rule, const void* structure) {
    MQLONG version = 0;
    if (structure == nullptr || std::memcmp(structure, rule.strucId.data(), rule.strucId.size()) != 0) {
        return 0;
    }
    std::memcpy(&version, static_cast<const char*>(structure) + rule.strucId.size(), sizeof version);
    if (version < 1 || version > static_cast<MQLONG>(rule.lengths.size())) {
        return 0;
    }
    return rule.lengths[static_cast<std::size_t>(version - 1)];
}

template <typename Structure>
bool Load(const StructureRule& rule, const void* from, const Structure& defaults, Structure& to) {
    const std::size_t length = LengthOf(rule, from);
    if (length == 0) {
        return false;
    }
    to = defaults;
    std::memcpy(static_cast<void*>(&to), from, length);
    return true;
}

template <typename Structure>
void Store(const StructureRule& rule, const Structure& from, void* to) {
    std::memcpy(to, &from, LengthOf(rule, &from));
}

mqi::MQGMO GmoDefault() {
    mqi::MQGMO gmo{};
    gmo.MatchOptions = mqi::MQMO_MATCH_MSG_ID | mqi::MQMO_MATCH_CORREL_ID;
    gmo.ReturnedLength = -1;  // MQRL_UNDEFINED
    return gmo;
}

}  // namespace

bool LoadStructure(const void* from, mqi::MQCNO& to) {
    return Load(kCnoRule, from, mqi::MQCNO{}, to);
}
bool LoadStructure(const void* from, mqi::MQOD& to) {
    return Load(kOdRule, from, mqi::MQOD{}, to);
}
bool LoadStructure(const void* from, mqi::MQMD& to) {
    return Load(kMdRule, from, mqi::MqmdDefault(), to);
}
bool LoadStructure(const void* from, mqi::MQGMO& to) {
    return Load(kGmoRule, from, GmoDefault(), to);
}
bool LoadStructure(const void* from, mqi::MQPMO& to) {
    return Load(kPmoRule, from, mqi::MQPMO{}, to);
}

void StoreStructure(const mqi::MQCNO& from, void* to) {
    Store(kCnoRule, from, to);
}
void StoreStructure(const mqi::MQOD& from, void* to) {
    Store(kOdRule, from, to);
}
void StoreStructure(const mqi::MQMD& from, void* to) {
    Store(kMdRule, from, to);
}
void StoreStructure(const mqi::MQGMO& from, void* to) {
    Store(kGmoRule, from, to);
}
void StoreStructure(const mqi::MQPMO& from, void* to) {
    Store(kPmoRule, from, to);
}

}  // namespace spoolmq
