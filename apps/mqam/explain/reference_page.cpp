// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/reference_page.h"

#include "mqam/explain/code_tables.h"
#include "mqam/explain/module_messages.h"
#include "mqam/explain/mq_reasons.h"
#include "mqam/explain/sentences.h"

namespace mqam {

namespace {

constexpr std::size_t kPageWidth = 120;

constexpr const char* kIntroduction =
    "This page is generated from the tables of the program: change those, then run `scripts/generate-docs`. "
    "`mqam explain CODE` prints the same texts on the command line, for example `mqam explain MQA0143`, "
    "`mqam explain 2085` or `mqam explain exit 3`.";

constexpr const char* kRecoveryIntroduction =
    "*Permanent* means that the same failure comes again until someone changes something; *transient*, that "
    "another attempt may succeed. A load with restart information ends with exit code 2 after a permanent "
    "failure and with exit code 9 after a transient one.";

constexpr const char* kMessageIntroduction =
    "The module reports these in the error text of a request, or in its trace. Their wording, misspellings "
    "included, is part of the interface. `%s` and `%d` stand for what the module inserts.";

constexpr const char* kReasonIntroduction =
    "A message that contains a reason code quotes one of these. Words in capital letters stand for names of "
    "your own. Commands such as `DISPLAY` and `ALTER` are typed in `runmqsc QMGR`.";

void AddParagraph(std::string& page, const std::string& text) {
    page += WrapSentences(text, kPageWidth) + "\n\n";
}

void AddHeading(std::string& page, const std::string& marks, const std::string& text) {
    page += marks + " " + text + "\n\n";
}

const char* NameRecovery(Recovery recovery) {
    switch (recovery) {
        case Recovery::kPermanent: return "Permanent.";
        case Recovery::kTransient: return "Transient.";
        case Recovery::kByReason: return "Permanent or transient, as the reason says.";
        case Recovery::kWarning: return "Nothing failed.";
    }
    return "";
}

std::string ToDo(const char* action) {
    return std::string("**What to do:** ") + action;
}

// Adds the section of a message. Its heading is the code or, for a message without a number, the text, so
// that links stay valid.
void AddMessage(std::string& page, const ModuleMessage& message) {
    const std::string code = MessageCodeOf(message);
    std::string text = MessageTextOf(message);
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at)) {
        text.replace(at, 1, " ");
    }
    if (code.empty()) {
        AddHeading(page, "###", text == " " ? "(a blank)" : text);
    } else {
        AddHeading(page, "###", code);
        page += "`" + text + "`\n\n";
    }
    if (message.failingCall != nullptr)
        AddParagraph(page, std::string("Failing call: `") + message.failingCall + "`.");
    if (message.shown == Shown::kReserved) {
        AddParagraph(page, std::string("Never made. ") + message.cause);
        return;
    }
    AddParagraph(page, message.cause);
    AddParagraph(page, ToDo(message.action));
    std::string origin = NameRecovery(message.recovery);
    origin += std::string(" Requests: ") + message.request + ".";
    if (message.shown == Shown::kTrace) origin += " Only in the trace.";
    if (message.shown == Shown::kNowhere) origin += " Another text is reported in its place.";
    AddParagraph(page, origin + " Made by " + message.emitter + ".");
}

void AddReason(std::string& page, const MqReason& reason) {
    AddHeading(page, "###", std::to_string(reason.number) + " " + reason.name);
    AddParagraph(page, MakeSentence(reason.meaning) + " " + reason.causes);
    AddParagraph(page, ToDo(reason.action));
    AddParagraph(page, std::string(NameRecovery(reason.recovery)) + " " + MakeSentence(NameVerbs(reason)));
}

void AddCode(std::string& page, const std::string& title, const char* meaning, const char* causes,
             const char* action) {
    AddHeading(page, "###", title);
    AddParagraph(page, MakeSentence(meaning) + " " + causes);
    AddParagraph(page, ToDo(action));
}

}  // namespace

std::string FormatReferencePage() {
    std::string page;
    AddHeading(page, "#", "Messages and codes");
    AddParagraph(page, kIntroduction);
    page +=
        "- [Exit codes of mqam](#exit-codes-of-mqam)\n"
        "- [Return codes of the module](#return-codes-of-the-module)\n"
        "- [Messages of the module](#messages-of-the-module)\n"
        "- [Messages without a number](#messages-without-a-number)\n"
        "- [MQ reasons](#mq-reasons)\n\n";
    AddParagraph(page, kRecoveryIntroduction);

    AddHeading(page, "##", "Exit codes of mqam");
    for (const ExitCodeRow& row : AllExitCodes())
        AddCode(page, "Exit code " + std::to_string(row.code), row.meaning, row.causes, row.action);

    AddHeading(page, "##", "Return codes of the module");
    for (const ReturnCodeRow& row : AllReturnCodes()) {
        AddCode(page, "Return code " + std::to_string(row.code) + " " + row.name, row.meaning, row.causes,
                row.action);
    }

    AddHeading(page, "##", "Messages of the module");
    AddParagraph(page, kMessageIntroduction);
    for (const ModuleMessage& message : NumberedMessages())
        AddMessage(page, message);

    AddHeading(page, "##", "Messages without a number");
    for (const ModuleMessage& message : UnnumberedMessages())
        AddMessage(page, message);

    AddHeading(page, "##", "MQ reasons");
    AddParagraph(page, kReasonIntroduction);
    for (const MqReason& reason : AllMqReasons()) {
        if (reason.number != 0) AddReason(page, reason);
    }
    page.pop_back();
    return page;
}

}  // namespace mqam
