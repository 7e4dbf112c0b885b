// Any bytes through the request and response readers of the database link.
// Besides surviving: a failed read leaves the object empty with a reason, and
// whatever was read writes back to a text that reads the same again.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "CTJDbReq.h"
#include "CTJDbResp.h"

namespace {
// The failed condition and its line, then the crash libFuzzer reports.
#define check(condition)                                                            \
    do {                                                                            \
        if (!(condition)) {                                                         \
            std::fprintf(stderr, "check failed at line %d: %s\n", __LINE__, #condition); \
            std::abort();                                                           \
        }                                                                           \
    } while (0)

void checkRequest(const char* data, std::size_t size)
{
    TJDB::CTJDbReq req;
    if (!req.parse(data, size)) {
        check(req.numOfCommands() == 0 && !req.has(TJDB::ReqElementToken) && req.error()[0] != 0);
        return;
    }
    const std::string text = req.serialize();
    TJDB::CTJDbReq back;
    check(back.parse(text));
    check(back.serialize() == text);
    check(back.numOfCommands() == req.numOfCommands());
    for (int e = 0; e <= TJDB::ReqElementMax; ++e)
        check(back.has(e) == req.has(e) && std::strcmp(back.getStr(e), req.getStr(e)) == 0);
}

void checkResponse(const char* data, std::size_t size)
{
    TJDB::CTJDbResp resp;
    if (!resp.parse(data, size)) {
        check(resp.numOfRows() == 0 && resp.numOfCols() == 0 && resp.error()[0] != 0);
        return;
    }
    check(resp.numOfCols() <= TJDB::CTJDbResp::MaxColumns);
    check(resp.numOfRows() == 0 || resp.numOfCols() > 0);
    for (int r = 0; r < resp.numOfRows(); ++r) {
        for (int c = 0; c < resp.numOfCols(); ++c) {
            const char* f = resp.field(r, c);
            check(f != nullptr && f[resp.fieldLength(r, c)] == '\0');
            check(!resp.isNull(r, c) || resp.fieldLength(r, c) == 0);
        }
    }
    check(resp.field(resp.numOfRows(), 0)[0] == '\0' && resp.colName(-1)[0] == '\0');
    resp.getInt(TJDB::ReqElementTotalRows);
    resp.getLongLong(TJDB::ReqElementLastInsertId);
    const std::string text = resp.serialize();
    TJDB::CTJDbResp back;
    check(back.parse(text));
    check(back.serialize() == text);
    check(back.numOfRows() == resp.numOfRows() && back.numOfCols() == resp.numOfCols());
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const char* bytes = reinterpret_cast<const char*>(data);
    checkRequest(bytes, size);
    checkResponse(bytes, size);
    return 0;
}
