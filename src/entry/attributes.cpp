// SPDX-License-Identifier: Apache-2.0
#include "entry/attributes.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "diag/message_text.h"
#include "diag/trace.h"
#include "entry/host_log.h"
#include "params/host_attributes.h"
#include "params/keyword_text.h"

namespace mqamod {

namespace {

// An attribute as text, taken from the host's block. In the block neither the name nor the value needs to end
// with a NUL, and the length of the value may or may not include one.
struct Attribute {
    char name[MQAMOD_ATTRIBUTE_NAME_BYTES + 1];
    const char* value;
    std::uint32_t valueLength;
    int textLength;  // characters of the value up to its NUL
};

bool Equals(const Attribute& attribute, const char* word) {
    return static_cast<std::size_t>(attribute.textLength) == std::strlen(word) &&
           std::memcmp(attribute.value, word, std::strlen(word)) == 0;
}

void TraceOutcome(const char* text) {
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, "PIDMMain", text);
}

void TraceReceived(const Attribute& attribute, const char* text) {
    TraceOutcome(FormatText("Attribute name: '%s' %s", attribute.name, text));
}

ReturnCode RefuseValue(const Attribute& attribute) {
    TraceOutcome(FormatText(
        "Attribute name: '%s' received.  Invalid value ('%.*s'). Returning 'pmrcBadAttrValue' to client.",
        attribute.name, attribute.textLength, attribute.value));
    return pmrcBadAttrValue;
}

ReturnCode PutGenEof(const Attribute& attribute) {
    SetGenEofFlag(true);
    TraceReceived(attribute, "received.  The next read request will return EOF");
    return pmrcOK;
}

ReturnCode PutPreserve(const Attribute& attribute) {
    const bool preserve = Equals(attribute, "YES");
    if (!preserve && !Equals(attribute, "NO")) return RefuseValue(attribute);
    SetPreserveRestartInfo(preserve);
    TraceReceived(attribute, preserve ? "received.  Checkpoint resources will be preserved."
                                      : "received.  Checkpoint resources will NOT be preserved.");
    return pmrcOK;
}

ReturnCode PutTimeout(const Attribute& attribute) {
    EnableTimeout(ReadNumber(attribute.value, static_cast<std::size_t>(attribute.textLength)));
    TraceReceived(
        attribute,
        "received. Enabled TimeOut Facility for responsiveness while reading input data from queue.");
    return pmrcOK;
}

ReturnCode PutLogHandle(const Attribute& attribute) {
    const ReturnCode rc = TakeHostLogHandle(attribute.value, attribute.valueLength);
    if (rc != pmrcBadAttrValue) return rc;
    Attribute handle = attribute;
    handle.textLength = std::min(handle.textLength, static_cast<int>(sizeof(void*)));
    return RefuseValue(handle);
}

ReturnCode Acknowledge(const Attribute& attribute) {
    TraceOutcome(FormatText("Received attribute '%s'='%.*s', no action taken nor required", attribute.name,
                            attribute.textLength, attribute.value));
    return pmrcOK;
}

struct AttributeRow {
    const char* name;
    ReturnCode (*put)(const Attribute&);
};

constexpr AttributeRow kAttributes[] = {
    {"GEN_EOF", PutGenEof},
    {"PRESERVE_RESTART_INFO", PutPreserve},
    {"TIMEOUT_SECONDS", PutTimeout},
    {"ZBQ_HL_LOG_HANDLE", PutLogHandle},
    {"CHARSET_NAME", Acknowledge},
    {"CHARSET_NUMBER", Acknowledge},
    {"WRITE_BOM", Acknowledge},
    {"BYTE_ORDER", Acknowledge},
    {"Restart_Validation", Acknowledge},
    {"CHECKPOINT_INTERVAL", Acknowledge},
    {"EXPORT_WIDTHS", Acknowledge},
};

void TakeName(const AttributeBlock& block, char (&name)[MQAMOD_ATTRIBUTE_NAME_BYTES + 1]) {
    std::snprintf(name, sizeof name, "%.*s", static_cast<int>(sizeof block.name), block.name);
}

Attribute TakeAttribute(const AttributeBlock& block) {
    Attribute attribute;
    TakeName(block, attribute.name);
    attribute.value = block.value;
    attribute.valueLength = block.valueLength;
    attribute.textLength = static_cast<int>(strnlen(attribute.value, attribute.valueLength));
    return attribute;
}

ReturnCode Put(const Attribute& attribute) {
    for (const AttributeRow& row : kAttributes) {
        if (std::strcmp(attribute.name, row.name) == 0) return row.put(attribute);
    }
    TraceOutcome(
        FormatText("Attribute name: '%s' unknown.  Returning 'pmrcBadAttrName' to client.", attribute.name));
    return pmrcBadAttrName;
}

}  // namespace

ReturnCode PutAttribute(const AttributeBlock& block) {
    const ReturnCode rc = Put(TakeAttribute(block));
    (void)std::fflush(nullptr);
    return rc;
}

ReturnCode GetAttribute(const AttributeBlock& block) {
    char name[MQAMOD_ATTRIBUTE_NAME_BYTES + 1];
    TakeName(block, name);
    TraceOutcome(FormatText("Attribute name: '%s'", name));
    (void)std::fflush(nullptr);
    return pmrcNotSupported;
}

}  // namespace mqamod
