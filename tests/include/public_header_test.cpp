// SPDX-License-Identifier: Apache-2.0

// Compares the public header as hosts in C and in C++ see it, and checks that the module keeps the header's
// promises.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "mqamod.h"
#include "platform/library.h"
#include "tests/support/module_fixture.h"

extern "C" std::size_t CHostLayout(std::size_t index);

namespace {

TEST(PublicHeaderTest, AHostInCSeesTheLayoutThatAHostInCppSees) {
    const std::size_t layout[] = {
        sizeof(RequestBlock),   offsetof(RequestBlock, ErrorText),
        sizeof(InitBlock),      sizeof(OpenBlock),
        sizeof(ReadBlock),      sizeof(PositionBlock),
        sizeof(ShutBlock),      sizeof(IdBlock),
        sizeof(AttributeBlock), sizeof(PositionData),
        pmiPIDMOptPutAttr,      pmrcTimeout,
    };
    std::size_t index = 0;
    for (const std::size_t expected : layout)
        EXPECT_EQ(CHostLayout(index++), expected) << "entry " << index;
    EXPECT_EQ(CHostLayout(index), 0U) << "C lists no more";
}

class PublicHeaderModuleTest : public ModuleFixture {};

// The header allows hosts to pass no data block for Close and Write.
TEST_F(PublicHeaderModuleTest, RequestsWithoutFieldsTakeANullDataBlock) {
    InitAndOpen();
    const auto entryPoint = reinterpret_cast<PIDMMainFunction>(platform::FindFunction(module, "PIDMMain"));
    RequestBlock request;
    std::memset(&request, 0, sizeof request);
    request.OptCode = pmiPIDMOptWrite;
    entryPoint(&request, nullptr);
    EXPECT_EQ(request.ReturnCode, static_cast<std::uint32_t>(pmrcNotSupported));
    request.OptCode = pmiPIDMOptClose;
    entryPoint(&request, nullptr);
    EXPECT_EQ(request.ReturnCode, static_cast<std::uint32_t>(pmrcOK));
    EXPECT_EQ(mq.Count(Verb::Disc), 1U);
}

}  // namespace
