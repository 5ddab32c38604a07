// SPDX-License-Identifier: Apache-2.0

// Cuts a parameter file at each byte or damages its bits. Init must either accept what is left or report what
// it refuses, and damage to one line must not change the setting of another.
#include <algorithm>

#include "tests/params/params_fixture.h"

using testing::Contains;

namespace {

struct ParmLine {
    const char* text;
    std::vector<std::string> report;  // the report lines that only this line causes
};

const std::vector<ParmLine>& ParmLines() {
    static const std::vector<ParmLine> lines = {
        {"-QMGR QM1", {}},
        {"-QNM Q9", {"Queue Name: 'Q9'"}},
        {"-RWAIT 4", {"MQ read wait interval: 4"}},
        {"-TDM no", {"Terminate on duplicate message: no"}},
        {"-CKFILE ck.dat", {"Checkpoint: File-based to pathname ck.dat"}},
        {"-LOG log.dat", {"Logging pathname: 'log.dat'"}},
        // The report shows this keyword only if there is a log.
        {"-TLF no", {}},
        {"-FLUSH yes", {"Media flush: Yes"}},
        {"-MQEX", {"Queue open: EXCLUSIVE."}},
        {"-BKSZ 1000", {"BlockSize: 1000"}},
        {"-OWAIT 2", {"MQ open wait interval: 2"}},
        {"-OTENACITY 9", {"MQ open retry tenacity: 9"}},
    };
    return lines;
}

// The test reads the trace, which only grows, after each Init. To save time, only the first lines are
// damaged.
constexpr std::size_t kDamagedLines = 6;
// Under Wine there is time only for a sample of the bits. 7 and 8 have no common factor, so the sample
// contains every bit position of a byte.
constexpr std::size_t kBitStep = kPathDelimiter == '/' ? 1 : 7;

std::string WholeFile() {
    std::string text;
    for (const ParmLine& line : ParmLines())
        text += std::string(line.text) + "\n";
    return text;
}

class DamagedParmFile : public ParamsFixture {
  protected:
    Outcome InitFrom(const std::string& text) {
        WriteFile("parms.txt", text);
        trace.Skip();
        return Init("-TRCL 1 trace.txt -PARMFILE parms.txt");
    }

    // Returns the parameters in effect as the trace of the last Init shows them.
    std::vector<std::string> Settings() {
        std::vector<std::string> lines = trace.NewLines();
        lines.erase(lines.begin(),
                    std::find(lines.begin(), lines.end(), "ParseParms(info): Paramters in effect:"));
        return lines;
    }

    static bool IsRefusal(const Outcome& outcome) {
        return outcome.returnCode == pmrcFailure &&
               outcome.errorText.find("--ERROR: MQA01") != std::string::npos;
    }
};

// Returns the keywords of a parameter file as an initialization string, so that the two can be compared.
std::string AsInitString(const std::string& text) {
    std::string init;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        init += " " + text.substr(begin, end - begin);
        begin = end + 1;
    }
    return init;
}

TEST_F(DamagedParmFile, CutAtAnyByteHasTheEffectOfTheSameWordsInTheInitializationString) {
    const std::string whole = WholeFile();
    int accepted = 0;
    for (std::size_t bytes = 0; bytes <= whole.size(); ++bytes) {
        SCOPED_TRACE(testing::Message() << "cut to " << bytes << " bytes");
        const std::string text = whole.substr(0, bytes);
        const Outcome fromFile = InitFrom(text);
        const std::vector<std::string> settingsOfFile = Settings();
        StartOver();
        const Outcome fromString = Init("-TRCL 1 trace.txt" + AsInitString(text));
        const std::vector<std::string> settingsOfString = Settings();
        StartOver();
        EXPECT_EQ(fromFile.returnCode, fromString.returnCode) << fromFile.errorText << fromString.errorText;
        if (fromFile.returnCode != pmrcOK) {
            EXPECT_TRUE(IsRefusal(fromFile)) << fromFile.errorText;
            EXPECT_EQ(fromFile.errorText, fromString.errorText);
            continue;
        }
        ++accepted;
        EXPECT_FALSE(settingsOfFile.empty());
        EXPECT_EQ(settingsOfFile, settingsOfString);
    }
    EXPECT_GT(accepted, 30);
}

TEST_F(DamagedParmFile, WithAnyBitFlippedIsRefusedOrAcceptedWithAllOtherLinesUnchanged) {
    const std::string whole = WholeFile();
    int refused = 0;
    int accepted = 0;
    std::size_t begin = 0;
    for (std::size_t damaged = 0; damaged < kDamagedLines; ++damaged) {
        const std::size_t end = begin + std::string(ParmLines()[damaged].text).size();
        for (std::size_t bit = begin * 8; bit < (end + 1) * 8; bit += kBitStep) {
            SCOPED_TRACE(testing::Message()
                         << "bit " << bit << " in the line of " << ParmLines()[damaged].text);
            std::string text = whole;
            text[bit / 8] = static_cast<char>(text[bit / 8] ^ (1 << bit % 8));
            // On Windows this byte is the end of a text file.
            if (kPathDelimiter != '/' && text[bit / 8] == '\x1A') continue;
            const Outcome outcome = InitFrom(text);
            const std::vector<std::string> lines = Settings();
            StartOver();
            if (outcome.returnCode != pmrcOK) {
                EXPECT_TRUE(IsRefusal(outcome)) << outcome.returnCode << outcome.errorText;
                ++refused;
                continue;
            }
            ++accepted;
            for (std::size_t other = 0; other < ParmLines().size(); ++other) {
                // If the newline of a line is damaged, the next line becomes part of it.
                if (other == damaged || (bit / 8 == end && other == damaged + 1)) continue;
                for (const std::string& report : ParmLines()[other].report)
                    EXPECT_THAT(lines, Contains("ParseParms(info): " + report));
            }
        }
        begin = end + 1;
    }
    EXPECT_GT(refused, 150 / static_cast<int>(kBitStep));
    EXPECT_GT(accepted, 100 / static_cast<int>(kBitStep));
}

}  // namespace
