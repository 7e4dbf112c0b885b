// Any frame through the database peer's request handling, on a database in
// memory with a few tables and subscribers. Besides surviving: every answer the
// peer writes is a response that reads back, under the token of a request or
// a subscription, and never larger than a frame.
#include <QByteArray>
#include <QtGlobal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "CTJDbResp.h"
#include "DbsServer.h"
#include "core/AppDefs.h"

namespace {
// The failed condition and its line, then the crash libFuzzer reports.
#define check(condition)                                                            \
    do {                                                                            \
        if (!(condition)) {                                                         \
            std::fprintf(stderr, "check failed at line %d: %s\n", __LINE__, #condition); \
            std::abort();                                                           \
        }                                                                           \
    } while (0)

void quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

const char kSeed[] =
    "CREATE TABLE contacts(id INTEGER PRIMARY KEY, name TEXT, number TEXT);"
    "CREATE TABLE calls(number TEXT, at TEXT);"
    "INSERT INTO contacts(name, number) VALUES('Ada', '1'), ('Alan', NULL), ('Grace', '3');"
    "INSERT INTO calls VALUES('1', 'monday');";
const char kSubscribe[] = "TJDB/1 request\n2=sub\n4=SELECT OID, * FROM contacts\nsubscribe=65535|contacts";
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static bool once = [] {
        qInstallMessageHandler(quiet);
        return true;
    }();
    (void)once;
    if (size < 1)
        return 0;
    // The first byte picks the frame's type and source; the rest is the payload.
    const int type = data[0] & 1 ? GuiAppsMsgDb : (data[0] & 2 ? GuiAppsMsgTxml : GuiAppsMsgUiReport);
    const int source = (data[0] & 4) ? GuiAppsZedagui : (data[0] & 8 ? GuiAppsBrowser : 0);
    const QByteArray payload(reinterpret_cast<const char*>(data) + 1, int(size - 1));

    auto db = std::make_unique<DbsDatabase>("user", QStringLiteral(":memory:"));
    QString error;
    check(db->open(true, &error));
    sqlite3_exec(db->handle(), kSeed, nullptr, nullptr, nullptr);
    bool overflow = false;
    db->takeChanges(&overflow);  // the seed is no news
    db->setTimeLimit(50);
    sqlite3_limit(db->handle(), SQLITE_LIMIT_LENGTH, 1 << 16);
    DbsServer server(2);
    int answers = 0;
    server.setSender([&answers](int destination, const QByteArray& text) {
        check(destination == GuiAppsZedagui || destination == GuiAppsBrowser);
        check(text.size() <= 0xFFFFFD);
        TJDB::CTJDbResp resp;
        check(resp.parse(text.constData(), std::size_t(text.size())));
        check(resp.numOfRows() <= 2);  // the batch size
        check(resp.has(TJDB::ReqElementToken));
        ++answers;
    });
    server.addDatabase(std::move(db));
    server.handleFrame(kSubscribe, GuiAppsBrowser, GuiAppsMsgDb);
    check(server.subscriptionCount() == 1 && answers == 2);

    server.handleFrame(payload, source, type);
    // The peer keeps answering after whatever came.
    const int before = answers;
    server.handleFrame("TJDB/1 request\n2=after\n4=SELECT 1", GuiAppsZedagui, GuiAppsMsgDb);
    check(answers == before + 1);
    return 0;
}
