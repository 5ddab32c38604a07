// SPDX-License-Identifier: Apache-2.0
#include "tests/spoolmq/support/mq_client.h"

#include <algorithm>
#include <cstring>
#include <ostream>
#include <vector>

namespace {

void Name(char* field, std::size_t size, const std::string& text) {
    std::memset(field, ' ', size);
    std::memcpy(field, text.data(), std::min(size, text.size()));
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Codes& codes) {
    return out << codes.compCode << "/" << codes.reason;
}

mqi::MQCNO NewCno(MQLONG version) {
    mqi::MQCNO cno{};
    std::memcpy(cno.StrucId, "CNO ", 4);
    cno.Version = version;
    return cno;
}

mqi::MQOD NewOd(const std::string& queue, MQLONG version) {
    mqi::MQOD od{};
    std::memcpy(od.StrucId, "OD  ", 4);
    od.Version = version;
    od.ObjectType = mqi::MQOT_Q;
    Name(od.ObjectName, sizeof od.ObjectName, queue);
    return od;
}

mqi::MQMD NewMd(MQLONG version) {
    mqi::MQMD md = mqi::MqmdDefault();
    md.Version = version;
    return md;
}

mqi::MQGMO NewGmo(MQLONG options, MQLONG version) {
    mqi::MQGMO gmo{};
    std::memcpy(gmo.StrucId, "GMO ", 4);
    gmo.Version = version;
    gmo.Options = options;
    gmo.MatchOptions = 3;
    gmo.ReturnedLength = -1;
    return gmo;
}

mqi::MQPMO NewPmo(MQLONG options, MQLONG version) {
    mqi::MQPMO pmo{};
    std::memcpy(pmo.StrucId, "PMO ", 4);
    pmo.Version = version;
    pmo.Options = options;
    return pmo;
}

Codes Connect(const std::string& name, MQHCONN* connection) {
    char field[48];
    Codes codes;
    Name(field, sizeof field, name);
    Mq().Conn(field, connection, &codes.compCode, &codes.reason);
    return codes;
}

Codes ConnectShared(const std::string& name, MQHCONN* connection) {
    char field[48];
    Codes codes;
    Name(field, sizeof field, name);
    mqi::MQCNO cno = NewCno();
    cno.Options = mqi::MQCNO_HANDLE_SHARE_BLOCK;
    Mq().Connx(field, &cno, connection, &codes.compCode, &codes.reason);
    return codes;
}

Codes Disconnect(MQHCONN* connection) {
    Codes codes;
    Mq().Disc(connection, &codes.compCode, &codes.reason);
    return codes;
}

Codes Open(MQHCONN connection, const std::string& queue, MQLONG options, MQHOBJ* object) {
    Codes codes;
    mqi::MQOD od = NewOd(queue);
    Mq().Open(connection, &od, options, object, &codes.compCode, &codes.reason);
    return codes;
}

Codes Close(MQHCONN connection, MQHOBJ* object) {
    Codes codes;
    Mq().Close(connection, object, 0, &codes.compCode, &codes.reason);
    return codes;
}

Codes Commit(MQHCONN connection) {
    Codes codes;
    Mq().Cmit(connection, &codes.compCode, &codes.reason);
    return codes;
}

Codes BackOut(MQHCONN connection) {
    Codes codes;
    Mq().Back(connection, &codes.compCode, &codes.reason);
    return codes;
}

Codes PutWith(MQHCONN connection, MQHOBJ object, const std::string& body, mqi::MQMD* md, MQLONG options) {
    Codes codes;
    mqi::MQPMO pmo = NewPmo(options);
    Mq().Put(connection, object, md, &pmo, static_cast<MQLONG>(body.size()), body.data(), &codes.compCode,
             &codes.reason);
    return codes;
}

Codes Put(MQHCONN connection, MQHOBJ object, const std::string& body, MQLONG options) {
    mqi::MQMD md = NewMd();
    return PutWith(connection, object, body, &md, options);
}

Got GetWith(MQHCONN connection, MQHOBJ object, mqi::MQMD md, mqi::MQGMO gmo, std::size_t bufferBytes) {
    Got got;
    got.md = md;
    got.gmo = gmo;
    std::vector<char> buffer(bufferBytes + 1);
    Mq().Get(connection, object, &got.md, &got.gmo, static_cast<MQLONG>(bufferBytes), buffer.data(),
             &got.dataLength, &got.codes.compCode, &got.codes.reason);
    if (got.codes.compCode != MQCC_FAILED) {
        const std::size_t length = std::min(bufferBytes, static_cast<std::size_t>(got.dataLength));
        got.body.assign(buffer.data(), length);
    }
    return got;
}

Got Get(MQHCONN connection, MQHOBJ object, MQLONG options, std::size_t bufferBytes) {
    return GetWith(connection, object, NewMd(), NewGmo(options), bufferBytes);
}

MQLONG Inquire(MQHCONN connection, MQHOBJ object, MQLONG selector) {
    Codes codes;
    MQLONG value = -1;
    Mq().Inq(connection, object, 1, &selector, 1, &value, 0, nullptr, &codes.compCode, &codes.reason);
    return codes == kDone ? value : -1;
}
