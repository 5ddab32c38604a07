// SPDX-License-Identifier: Apache-2.0

// Compares the items of docs/hosts.md with the table.
#include "mqam/explain/rules.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>
#include <string>

#include "mqam/explain/sentences.h"
#include "tests/support/files.h"

using namespace mqam;

namespace {

struct PageItem {
    std::string name;
    /// Returns the whole text on one line.
    std::string text;
};

// Finds items of the form "- **H6.** Text" and "- **L5, power failure.** Text". Each extends to the next
// item, heading or empty line.
std::map<std::string, PageItem> ReadPage() {
    std::map<std::string, PageItem> items;
    const std::regex start(R"(^- \*\*([HTGL]\d+)(, ([^*]+))?\.\*\* (.*)$)");
    std::istringstream page(ReadFile(HOSTS_PAGE));
    std::string current;
    for (std::string line; std::getline(page, line);) {
        std::smatch match;
        if (std::regex_match(line, match, start)) {
            current = match[1];
            items[current] = {match[3], match[4]};
        } else if (line.starts_with("  ") && !current.empty()) {
            items[current].text += " " + line.substr(2);
        } else {
            current.clear();
        }
    }
    return items;
}

TEST(LoadRules, EveryItemOfThePageIsInTheTableAndTheOtherWayRound) {
    const auto page = ReadPage();
    EXPECT_EQ(page.size(), 46U);
    EXPECT_EQ(AllLoadRules().size(), page.size());
    for (const auto& [id, item] : page)
        EXPECT_NE(FindLoadRule(id), nullptr) << id;
}

TEST(LoadRules, FirstSentenceAndNameAreThoseOfThePage) {
    const auto page = ReadPage();
    for (const LoadRule& rule : AllLoadRules()) {
        const auto item = page.find(rule.id);
        ASSERT_NE(item, page.end()) << rule.id;
        EXPECT_EQ(item->second.name, rule.name) << rule.id;
        EXPECT_EQ(FirstSentence(item->second.text), rule.statement) << rule.id;
    }
}

TEST(LoadRules, GuaranteesAndLimitsSayWhatAnOperatorDoes) {
    for (const LoadRule& rule : AllLoadRules()) {
        const bool isForHosts = *rule.id == 'H' || *rule.id == 'T';
        EXPECT_EQ(*rule.action == '\0', isForHosts) << rule.id;
        EXPECT_EQ(*rule.name == '\0', isForHosts) << rule.id;
    }
}

TEST(LoadRules, AnIdIsFoundInAnyCase) {
    EXPECT_EQ(FindLoadRule("h6"), FindLoadRule("H6"));
    EXPECT_EQ(FindLoadRule("H0"), nullptr);
}

}  // namespace
