// SPDX-License-Identifier: Apache-2.0

// Compares src/mqi/mqi.h with IBM's own headers, for the system for which the test was compiled.
#include <gmock/gmock.h>

#include <algorithm>
#include <regex>
#include <set>

#include "tests/mqi/mqi_facts.h"
#include "tests/support/files.h"

namespace {

constexpr char kStrucLength[] = "MQCD.StrucLength";

TEST(MqiHeader, AgreesWithIbmsInEverySizeOffsetConstantDefaultAndSignature) {
    const std::vector<MqiFact> ours = OurMqiFacts();
    const std::vector<MqiFact> ibms = IbmMqiFacts();
    ASSERT_EQ(ours.size(), ibms.size());
    for (std::size_t i = 0; i < ours.size(); ++i) {
        ASSERT_EQ(ours[i].name, ibms[i].name);
        if (ours[i].name == "MQCD_DEFAULT") continue;  // compared by the next test
        EXPECT_EQ(ours[i].value, ibms[i].value) << ours[i].name;
    }
}

const MqiFact& Find(const std::vector<MqiFact>& facts, const std::string& name) {
    return *std::find_if(facts.begin(), facts.end(), [&](const MqiFact& fact) { return fact.name == name; });
}

/// Returns where the digits of a field begin in a DEFAULT fact; the field is given as "offset 1580, 4 bytes".
std::size_t DigitsAt(const std::string& place) {
    const std::size_t offset = std::stoul(place.substr(place.find(' ')));
    return offset * 2 + offset / 8 + 1;
}

// IBM's initialiser has the length of the newest version, ours that of the version passed. The default values
// differ in no other field.
TEST(MqiHeader, ChannelDefaultDiffersFromIbmsOnlyInStrucLength) {
    const std::vector<MqiFact> ours = OurMqiFacts();
    std::string ourDefault = Find(ours, "MQCD_DEFAULT").value;
    std::string ibmDefault = Find(IbmMqiFacts(), "MQCD_DEFAULT").value;
    const std::string place = Find(ours, kStrucLength).value;
    ASSERT_THAT(place, testing::EndsWith(", 4 bytes"));

    const std::size_t at = DigitsAt(place);
    const std::size_t digits = ourDefault[at + 8] == ' ' ? 9 : 8;
    ASSERT_EQ(ourDefault.substr(at, 8), "98060000") << "1688, least significant byte first";
    ourDefault.erase(at, digits);
    ibmDefault.erase(at, digits);
    EXPECT_EQ(ourDefault, ibmDefault);
}

std::set<std::string> Names(const std::string& source, const std::string& expression,
                            const std::string& prefix = "") {
    std::set<std::string> names;
    const std::regex pattern(expression);
    for (std::sregex_iterator match(source.begin(), source.end(), pattern), end; match != end; ++match) {
        names.insert(prefix + (*match)[1].str());
    }
    return names;
}

// A constant or field that is added to the header must also be added to the list of facts. Otherwise it is
// not compared.
TEST(MqiHeader, EveryConstantFieldAndVerbOfTheHeaderIsCompared) {
    const std::string header = ReadFile(PathOnSystem(MQI_HEADER_FILE));
    std::set<std::string> expected = Names(header, "inline constexpr MQ[A-Z]+ (MQ[A-Z_0-9]+) =");
    expected.merge(Names(header, "\nvoid (MQ[A-Z]+)\\("));
    const std::regex structure("\nstruct (MQ[A-Z]+) \\{([^}]*)\\};");
    for (std::sregex_iterator match(header.begin(), header.end(), structure), end; match != end; ++match) {
        const std::string name = (*match)[1].str();
        expected.insert({"size of " + name, name + "_DEFAULT"});
        expected.merge(Names((*match)[2].str(), "MQ[A-Z]+ ([A-Za-z0-9]+)[;\\[]", name + "."));
    }
    ASSERT_GT(expected.size(), 150U) << "the header was not understood";

    std::set<std::string> compared;
    for (const MqiFact& fact : OurMqiFacts())
        compared.insert(fact.name);
    EXPECT_EQ(compared, expected);
}

}  // namespace
