// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/mqi_failure_cases.h"

#include <algorithm>
#include <array>

namespace {

using Codes = std::vector<MQLONG>;

// Each list is named after the page of IBM's documentation ("IBM MQ, Developing applications reference, MQI")
// whose section "Reason code" it follows, for all platforms; codes of the pages that the page refers to
// (reconnection, TLS) are included.

// "MQCONNX - Connect queue manager (extended)" with "MQCONN - Connect queue manager"
const Codes kConnxWarnings = {2002, 2058, 2267, 2391};
const Codes kConnxFailures = {
    2009, 2012, 2017, 2018, 2025, 2035, 2045, 2046, 2058, 2059, 2063, 2071, 2102, 2103, 2109, 2127, 2129,
    2130, 2131, 2132, 2138, 2139, 2140, 2157, 2160, 2161, 2162, 2163, 2183, 2187, 2195, 2202, 2203, 2204,
    2217, 2219, 2267, 2271, 2273, 2277, 2278, 2279, 2298, 2344, 2350, 2374, 2375, 2376, 2380, 2381, 2382,
    2383, 2384, 2385, 2386, 2387, 2388, 2389, 2390, 2392, 2393, 2396, 2397, 2398, 2399, 2400, 2401, 2402,
    2406, 2407, 2409, 2423, 2495, 2496, 2497, 2537, 2538, 2539, 2540, 2543, 2546, 2547, 2548, 2553, 2556,
    2570, 2573, 2574, 2575, 2577, 2583, 2587, 2589, 2590, 2591, 2592, 2593, 2594, 2595, 2600, 2602};

// "MQOPEN - Open object"
const Codes kOpenWarnings = {2136};
const Codes kOpenFailures = {2001, 2009, 2011, 2012, 2017, 2018, 2019, 2035, 2042, 2043, 2044, 2045, 2046,
                             2052, 2057, 2058, 2059, 2063, 2071, 2082, 2085, 2086, 2087, 2091, 2092, 2100,
                             2101, 2102, 2109, 2130, 2136, 2152, 2153, 2154, 2155, 2156, 2157, 2161, 2162,
                             2183, 2184, 2188, 2189, 2193, 2194, 2195, 2196, 2197, 2198, 2199, 2202, 2203,
                             2204, 2217, 2219, 2266, 2267, 2268, 2269, 2279, 2298, 2342, 2343, 2345, 2346,
                             2347, 2348, 2349, 2360, 2366, 2373, 2374, 2425, 2441, 2459, 2480, 2500, 2516,
                             2519, 2520, 2546, 2547, 2548, 2551, 2556, 2560, 2564};

// "MQGET - Get message"
const Codes kGetWarningsWithMessage = {2110, 2111, 2112, 2113, 2114, 2115, 2116, 2117,
                                       2118, 2119, 2120, 2143, 2144, 2145, 2146, 2150,
                                       2190, 2241, 2242, 2243, 2244, 2245, 2272, 2457};
const Codes kGetWarningsWithoutMessage = {2070, 2209};
constexpr MQLONG kTruncatedAccepted = 2079;
constexpr MQLONG kTruncatedFailed = 2080;
const Codes kGetFailures = {
    2003, 2004, 2005, 2009, 2010, 2012, 2016, 2018, 2019, 2024, 2026, 2033, 2034, 2036, 2037, 2041,
    2046, 2052, 2058, 2059, 2062, 2069, 2071, 2072, 2090, 2099, 2101, 2102, 2109, 2130, 2133, 2140,
    2157, 2161, 2162, 2183, 2186, 2192, 2193, 2195, 2202, 2203, 2204, 2206, 2207, 2217, 2219, 2245,
    2246, 2247, 2250, 2251, 2255, 2256, 2257, 2259, 2279, 2298, 2331, 2342, 2345, 2346, 2347, 2351,
    2352, 2353, 2354, 2355, 2366, 2373, 2374, 2394, 2460, 2500, 2546, 2547, 2548, 2555, 2556, 2569};

// "MQCMIT - Commit changes"
const Codes kCmitWarnings = {2003, 2124, 2408};
const Codes kCmitFailures = {2003, 2009, 2012, 2018, 2059, 2071, 2101, 2102, 2109, 2123, 2130,
                             2157, 2162, 2183, 2195, 2203, 2204, 2217, 2219, 2232, 2279, 2297,
                             2298, 2346, 2373, 2374, 2546, 2547, 2548, 2549, 2556};

// "MQBACK - Back out changes"
const Codes kBackWarnings = {2124};
const Codes kBackFailures = {2009, 2012, 2018, 2071, 2101, 2102, 2109, 2123, 2130,
                             2157, 2162, 2183, 2195, 2203, 2204, 2217, 2219, 2279,
                             2298, 2346, 2373, 2374, 2546, 2547, 2548, 2549, 2556};

// "MQCLOSE - Close object"
const Codes kCloseWarnings = {2241, 2242, 2458};
const Codes kCloseFailures = {2009, 2018, 2019, 2035, 2041, 2045, 2046, 2052, 2055, 2058, 2059,
                              2063, 2071, 2101, 2102, 2109, 2130, 2157, 2162, 2183, 2193, 2195,
                              2203, 2204, 2217, 2219, 2279, 2298, 2342, 2345, 2346, 2347, 2349,
                              2373, 2374, 2429, 2502, 2546, 2547, 2548, 2556};

// "MQDISC - Disconnect queue manager"
const Codes kDiscWarnings = {2003, 2124, 2344};
const Codes kDiscFailures = {2009, 2018, 2058, 2059, 2071, 2101, 2102, 2109, 2123, 2130,
                             2131, 2138, 2157, 2162, 2183, 2195, 2203, 2204, 2217, 2219,
                             2279, 2298, 2374, 2375, 2376, 2546, 2547, 2548, 2549, 2556};

// Returns whether the connection no longer exists after a failure with this reason.
bool BreaksConnection(MQLONG reason) {
    constexpr std::array kReasons = {2009, 2018, 2059, 2162, 2203, 2217, 2279, 2546, 2548, 2556};
    return std::find(kReasons.begin(), kReasons.end(), reason) != kReasons.end();
}

struct WhenName {
    When when;
    const char* name;
};
constexpr WhenName kFirst = {When::First, "first"};
constexpr WhenName kMiddle = {When::Middle, "middle"};
constexpr WhenName kLast = {When::Last, "last"};
constexpr WhenName kEmptyQueue = {When::EmptyQueue, "empty_queue"};
constexpr std::array kAnyCall = {kFirst, kMiddle, kLast};

struct Reading {
    Effect effect;
    const char* name;  // part of the test's name
};

class CaseList {
  public:
    explicit CaseList(Verb verb) : verb_(verb) {}

    MqiFailureCase& Add(MQLONG compCode, MQLONG reason, const WhenName& when, const Reading& reading) {
        MqiFailureCase entry;
        entry.name = (compCode == MQCC_WARNING ? "WARNING_" : "FAILED_") + std::to_string(reason) + "_" +
                     when.name + reading.name;
        entry.when = when.when;
        entry.fault.verb = verb_;
        entry.fault.compCode = compCode;
        entry.fault.reason = reason;
        entry.fault.effect = reading.effect;
        entry.fault.breaksConnection = compCode == MQCC_FAILED && BreaksConnection(reason);
        cases_.push_back(entry);
        return cases_.back();
    }

    void AddAll(MQLONG compCode, const Codes& reasons, const std::vector<Reading>& readings) {
        for (const MQLONG reason : reasons)
            for (const WhenName& when : kAnyCall)
                for (const Reading& reading : readings)
                    Add(compCode, reason, when, reading);
    }

    std::vector<MqiFailureCase> Take() { return std::move(cases_); }

  private:
    Verb verb_;
    std::vector<MqiFailureCase> cases_;
};

void AddConnx(CaseList& list) {
    // A warning still returns a connection.
    list.AddAll(MQCC_WARNING, kConnxWarnings, {{Effect::Done, ""}});
    list.AddAll(MQCC_FAILED, kConnxFailures, {{Effect::None, ""}});
}

void AddOpen(CaseList& list) {
    list.AddAll(MQCC_WARNING, kOpenWarnings, {{Effect::Done, ""}});
    list.AddAll(MQCC_FAILED, kOpenFailures, {{Effect::None, ""}});
    for (const MQLONG reason : kOpenFailures) {
        if (!BreaksConnection(reason))
            list.Add(MQCC_FAILED, reason, kMiddle, {Effect::None, "_retried"}).retried = true;
    }
}

void AddGet(CaseList& list) {
    list.AddAll(MQCC_WARNING, kGetWarningsWithMessage, {{Effect::Done, ""}});
    list.AddAll(MQCC_WARNING, {kTruncatedAccepted}, {{Effect::MessageCut, ""}});
    list.AddAll(MQCC_WARNING, {kTruncatedFailed}, {{Effect::MessageStays, ""}});
    list.AddAll(MQCC_WARNING, kGetWarningsWithoutMessage, {{Effect::None, ""}});
    for (const MQLONG reason : kGetFailures) {
        const Effect effect = reason == 2003 ? Effect::Doomed : Effect::None;
        for (const WhenName& when : {kFirst, kMiddle, kLast, kEmptyQueue}) {
            list.Add(MQCC_FAILED, reason, when, {effect, ""});
            list.Add(MQCC_FAILED, reason, when, {effect, "_length_untouched"}).fault.leavesLength = true;
        }
    }
}

void AddCmit(CaseList& list) {
    const std::vector<Reading> readings = {
        {Effect::Done, "_committed"}, {Effect::BackedOut, "_backed_out"}, {Effect::None, "_still_open"}};
    list.AddAll(MQCC_WARNING, kCmitWarnings, readings);
    list.AddAll(MQCC_FAILED, kCmitFailures, readings);
}

void AddBack(CaseList& list) {
    struct SaveFaultName {
        SaveFault fault;
        const char* name;
    };
    const auto add = [&](MQLONG compCode, MQLONG reason, const WhenName& when, const Reading& reading) {
        for (const SaveFaultName& save : {SaveFaultName{SaveFault::Tell, "_after_fgetpos"},
                                          {SaveFault::Write, "_after_fwrite"},
                                          {SaveFault::Flush, "_after_fflush"}}) {
            MqiFailureCase& entry = list.Add(compCode, reason, when, reading);
            entry.name += save.name;
            entry.saveFault = save.fault;
        }
    };
    for (const WhenName& when : kAnyCall) {
        for (const MQLONG reason : kBackWarnings)
            add(MQCC_WARNING, reason, when, {Effect::Done, ""});
        for (const MQLONG reason : kBackFailures)
            add(MQCC_FAILED, reason, when, {Effect::None, ""});
    }
}

void AddClose(CaseList& list) {
    list.AddAll(MQCC_WARNING, kCloseWarnings, {{Effect::Done, ""}});
    list.AddAll(MQCC_FAILED, kCloseFailures, {{Effect::None, ""}});
}

void AddDisc(CaseList& list) {
    const std::vector<Reading> readings = {
        {Effect::Done, "_committed"}, {Effect::BackedOut, "_backed_out"}, {Effect::None, "_still_connected"}};
    list.AddAll(MQCC_WARNING, kDiscWarnings, readings);
    list.AddAll(MQCC_FAILED, kDiscFailures, readings);
}

}  // namespace

std::vector<MqiFailureCase> MqiFailureCases(Verb verb) {
    CaseList list(verb);
    switch (verb) {
        case Verb::Connx: AddConnx(list); break;
        case Verb::Open: AddOpen(list); break;
        case Verb::Get: AddGet(list); break;
        case Verb::Cmit: AddCmit(list); break;
        case Verb::Back: AddBack(list); break;
        case Verb::Close: AddClose(list); break;
        case Verb::Disc: AddDisc(list); break;
    }
    return list.Take();
}
