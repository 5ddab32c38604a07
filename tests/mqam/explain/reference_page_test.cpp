// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/reference_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "mqam/explain/code_tables.h"
#include "mqam/explain/module_messages.h"
#include "mqam/explain/mq_reasons.h"
#include "tests/support/files.h"

using namespace mqam;

namespace {

TEST(ReferencePage, DocsMessagesIsUpToDate) {
    EXPECT_TRUE(ReadFile(MESSAGES_PAGE) == FormatReferencePage())
        << "docs/messages.md is out of date: run scripts/generate-docs";
}

TEST(ReferencePage, EveryCodeHasAHeading) {
    const std::string page = FormatReferencePage();
    const auto has = [&page](const std::string& heading) {
        return page.find("\n### " + heading + "\n") != std::string::npos;
    };
    for (const ModuleMessage& message : NumberedMessages())
        EXPECT_TRUE(has(MessageCodeOf(message)));
    for (const MqReason& reason : AllMqReasons()) {
        if (reason.number != 0) {
            EXPECT_TRUE(has(std::to_string(reason.number) + " " + reason.name));
        }
    }
    for (const ExitCodeRow& row : AllExitCodes())
        EXPECT_TRUE(has("Exit code " + std::to_string(row.code)));
    for (const ReturnCodeRow& row : AllReturnCodes())
        EXPECT_TRUE(has("Return code " + std::to_string(row.code) + " " + row.name));
}

TEST(ReferencePage, LinesAreAtMost120CharactersLongButForTextsOfMessages) {
    const std::string page = FormatReferencePage();
    for (std::size_t from = 0; from < page.size();) {
        const std::size_t end = std::min(page.find('\n', from), page.size());
        if (page[from] != '`') {
            EXPECT_LE(end - from, 120U) << page.substr(from, end - from);
        }
        from = end + 1;
    }
}

}  // namespace
