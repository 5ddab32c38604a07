// SPDX-License-Identifier: Apache-2.0
#include "tests/crash/death.h"

#include <cerrno>
#include <charconv>
#include <cstring>

namespace {

struct MomentName {
    DeathMoment moment;
    const char* name;
};
// If one name begins with another, the longer one must be tried first.
constexpr MomentName kMomentNames[] = {
    {DeathMoment::kBefore, "before"},       {DeathMoment::kAfter, "after"},
    {DeathMoment::kCutToThree, "cut-to-3"}, {DeathMoment::kCutToHalf, "cut-to-half"},
    {DeathMoment::kCutByOne, "cut-by-1"},   {DeathMoment::kEioOn, "eio-on"},
    {DeathMoment::kEioAll, "eio-all"},      {DeathMoment::kEio, "eio"},
    {DeathMoment::kNoSpaceOn, "enospc-on"}, {DeathMoment::kNoSpace, "enospc"},
};

bool TakeNumber(std::string& text, std::uint64_t& number) {
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc()) return false;
    text.erase(0, static_cast<std::size_t>(rest - text.data()));
    return true;
}

bool TakeWord(std::string& text, const char* word) {
    if (!text.starts_with(word)) return false;
    text.erase(0, std::strlen(word));
    return true;
}

bool ParseDeath(std::string text, Death& death) {
    if (TakeWord(text, "own-")) {
        death.scope = DeathScope::kOwn;
    } else if (TakeWord(text, "store-")) {
        death.scope = DeathScope::kStore;
    } else if (TakeWord(text, "look-")) {
        death.scope = DeathScope::kLook;
    } else {
        std::uint64_t life = 0;
        if (!TakeWord(text, "life") || !TakeNumber(text, life) || !TakeWord(text, "-")) return false;
        death.scope = DeathScope::kMqi;
        death.life = static_cast<int>(life);
        death.verb = text.substr(0, text.find('-'));
        if (!TakeWord(text, (death.verb + "-").c_str())) return false;
    }
    for (const MomentName& row : kMomentNames) {
        if (!TakeWord(text, row.name)) continue;
        death.moment = row.moment;
        return TakeWord(text, "-") && TakeNumber(text, death.number) && text.empty() && death.number > 0;
    }
    return false;
}

}  // namespace

bool IsCut(DeathMoment moment) {
    return moment == DeathMoment::kCutToThree || moment == DeathMoment::kCutToHalf ||
           moment == DeathMoment::kCutByOne;
}

int ErrorAt(DeathMoment moment) {
    switch (moment) {
        case DeathMoment::kEio:
        case DeathMoment::kEioOn:
        case DeathMoment::kEioAll: return EIO;
        case DeathMoment::kNoSpace:
        case DeathMoment::kNoSpaceOn: return ENOSPC;
        default: return 0;
    }
}

bool GoesOnFailing(DeathMoment moment) {
    return moment == DeathMoment::kEioOn || moment == DeathMoment::kNoSpaceOn || FailsEveryScope(moment);
}

bool FailsEveryScope(DeathMoment moment) {
    return moment == DeathMoment::kEioAll;
}

std::string DescribeDeath(const Death& death) {
    std::string text;
    switch (death.scope) {
        case DeathScope::kOwn: text = "own"; break;
        case DeathScope::kStore: text = "store"; break;
        case DeathScope::kLook: text = "look"; break;
        case DeathScope::kMqi: text = "life" + std::to_string(death.life) + "-" + death.verb; break;
    }
    for (const MomentName& row : kMomentNames) {
        if (row.moment == death.moment) text += std::string("-") + row.name;
    }
    return text + "-" + std::to_string(death.number);
}

std::string DescribePoint(const std::vector<Death>& deaths) {
    std::string text;
    for (const Death& death : deaths)
        text += (text.empty() ? "" : "+") + DescribeDeath(death);
    return text;
}

bool ParsePoint(const std::string& text, std::vector<Death>& deaths) {
    deaths.clear();
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('+', begin), text.size());
        Death death;
        if (!ParseDeath(text.substr(begin, end - begin), death)) return false;
        deaths.push_back(death);
        begin = end + 1;
    }
    return true;
}
