/* SPDX-License-Identifier: Apache-2.0 */

/* The public header as the only header of a C program. It is included twice, as careless programs do. */
#include "mqamod.h"

/* Compiled as C, so that the C++ test can compare what a C host sees with what it sees itself. */
size_t CHostLayout(size_t index);

size_t CHostLayout(size_t index) {
    const size_t layout[] = {
        sizeof(RequestBlock),   offsetof(RequestBlock, ErrorText),
        sizeof(InitBlock),      sizeof(OpenBlock),
        sizeof(ReadBlock),      sizeof(PositionBlock),
        sizeof(ShutBlock),      sizeof(IdBlock),
        sizeof(AttributeBlock), sizeof(PositionData),
        pmiPIDMOptPutAttr,      pmrcTimeout,
    };
    return index < sizeof layout / sizeof layout[0] ? layout[index] : 0;
}
