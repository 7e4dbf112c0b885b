// The proxy auto-config evaluator: reading scripts, contexts, results, the
// standard helper functions on a fixed clock and a resolver of our own (no
// name ever leaves the machine), and the time and memory caps.
#include <QtTest>

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>

#include "pac.h"

namespace {
// Names the tests may resolve; everything else is unknown.
int testResolver(const char* host, char* out, size_t size)
{
    in_addr numeric{};
    if (inet_pton(AF_INET, host, &numeric) == 1) {
        std::snprintf(out, size, "%s", host);
        return 1;
    }
    const char* address = nullptr;
    if (std::strcmp(host, "localhost") == 0)
        address = "127.0.0.1";
    else if (std::strcmp(host, "proxy.corp.example") == 0)
        address = "10.20.30.40";
    if (!address)
        return 0;
    std::snprintf(out, size, "%s", address);
    return 1;
}

QString take(char* text)
{
    if (!text)
        return QStringLiteral("<null>");
    const QString result = QString::fromUtf8(text);
    std::free(text);
    return result;
}

// Friday 15 March 2024, 10:30:20 UTC.
const double kFixedNow = 1710498620000.0;

// A context whose FindProxyForURL evaluates its url argument as an expression.
duk_context* expressionContext()
{
    duk_context* ctx = alloc_ctx("function FindProxyForURL(url, host) { return String(eval(url)); }");
    if (ctx)
        pac_set_time(ctx, kFixedNow);
    return ctx;
}
}  // namespace

class TestPacEvaluator : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

    QString writeFile(const QString& name, const QByteArray& data)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(data);
        return path;
    }

private slots:
    void initTestCase()
    {
        // The local-time forms of the date helpers read the zone.
        qputenv("TZ", "UTC");
        tzset();
        pac_set_resolver(testResolver);
        QVERIFY(m_dir.isValid());
    }

    void readsOnlyUsableScriptFiles()
    {
        const QByteArray script = "function FindProxyForURL(u, h) { return \"DIRECT\"; }\n";
        char* text = read_pacfile(writeFile("good.pac", script).toUtf8().constData());
        QVERIFY(text);
        QCOMPARE(QByteArray(text), script);
        std::free(text);

        QVERIFY(!read_pacfile(nullptr));
        QVERIFY(!read_pacfile(""));
        QVERIFY(!read_pacfile(m_dir.filePath("missing.pac").toUtf8().constData()));
        QVERIFY(!read_pacfile(m_dir.path().toUtf8().constData()));
        QVERIFY(!read_pacfile(writeFile("empty.pac", QByteArray()).toUtf8().constData()));
        QVERIFY(!read_pacfile(writeFile("nul.pac", QByteArray("var a = 1;\0;", 12)).toUtf8().constData()));
        QVERIFY(!read_pacfile(writeFile("huge.pac", QByteArray(1024 * 1024 + 1, ' ')).toUtf8().constData()));
        text = read_pacfile(writeFile("limit.pac", QByteArray(1024 * 1024, ' ')).toUtf8().constData());
        QVERIFY(text);
        std::free(text);
    }

    void refusesScriptsThatCannotServe_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("error");
        QTest::addColumn<unsigned>("timeoutMs");
        QTest::newRow("syntax") << QByteArray("function FindProxyForURL(u, h) { return ") << "SyntaxError" << 1500u;
        QTest::newRow("throws") << QByteArray("throw new Error('broken deployment');") << "broken deployment" << 1500u;
        QTest::newRow("no function") << QByteArray("var x = 1;") << "FindProxyForURL" << 1500u;
        QTest::newRow("not a function") << QByteArray("var FindProxyForURL = 'PROXY a:1';") << "FindProxyForURL" << 1500u;
        QTest::newRow("loops") << QByteArray("while (true) {}") << "timeout" << 1500u;
        QTest::newRow("catches and loops") << QByteArray("for (;;) { try { for (;;) {} } catch (e) {} }") << "timeout" << 1500u;
        QTest::newRow("eats memory") << QByteArray("var a = []; for (;;) a.push('x'.repeat(100000) + a.length);")
                                     << "alloc" << 10000u;
        // Long native work runs no bytecode: the allocator holds the clock.
        QTest::newRow("slow native") << QByteArray("var a = []; for (;;) a.push(new Array(200000).join('x') + a.length);")
                                     << "Error" << 1500u;
        QTest::newRow("recurses") << QByteArray("function f(n) { return f(n + 1) + 1; } f(0);") << "RangeError" << 1500u;
    }

    void refusesScriptsThatCannotServe()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, error);
        QFETCH(unsigned, timeoutMs);
        // Memory must run out before the clock does, however loaded the machine.
        pac_set_limits(timeoutMs, 8 * 1024 * 1024);
        QElapsedTimer clock;
        clock.start();
        duk_context* ctx = alloc_ctx(script.constData());
        const qint64 took = clock.elapsed();
        pac_set_limits(1000, 16 * 1024 * 1024);
        QVERIFY(!ctx);
        QVERIFY2(QString::fromUtf8(pac_last_error(nullptr)).contains(error), pac_last_error(nullptr));
        // The time cap holds even for a script that catches its own abort.
        QVERIFY2(took < timeoutMs + 3500, qPrintable(QString::number(took)));
        QVERIFY(!alloc_ctx(nullptr));
        QVERIFY(!alloc_ctx(""));
    }

    void answersWithTheScriptsTextOrUndefined_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("result");
        QTest::newRow("list") << QByteArray("return 'PROXY 127.0.0.1:3128; DIRECT';") << "PROXY 127.0.0.1:3128; DIRECT";
        QTest::newRow("per host") << QByteArray("return host === 'directory.test' ? 'PROXY p:1' : 'DIRECT';")
                                  << "PROXY p:1";
        QTest::newRow("url seen") << QByteArray("return url;") << "http://directory.test:8080/soap?x=1";
        QTest::newRow("empty") << QByteArray("return '';") << "";
        QTest::newRow("undefined") << QByteArray("return;") << "undefined";
        QTest::newRow("object") << QByteArray("return { toString: function () { for (;;) {} } };") << "undefined";
        QTest::newRow("throws") << QByteArray("throw 'no proxy for you';") << "<null>";
        QTest::newRow("loops") << QByteArray("for (;;) {}") << "<null>";
        QTest::newRow("unicode") << QByteArray("return 'PROXY pr\\u00f6xy:1';") << QString::fromUtf8("PROXY pr\xc3\xb6xy:1");
    }

    void answersWithTheScriptsTextOrUndefined()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, result);
        pac_set_limits(300, 0);
        duk_context* ctx = alloc_ctx(("function FindProxyForURL(url, host) { " + body + " }").constData());
        pac_set_limits(1000, 0);
        QVERIFY(ctx);
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(take(find_proxy(ctx, "http://directory.test:8080/soap?x=1", "directory.test")), result);
        QVERIFY(clock.elapsed() < 3000);
        if (result == QLatin1String("<null>"))
            QVERIFY(*pac_last_error(ctx));
        // The context stays usable after a failed call.
        QCOMPARE(take(find_proxy(ctx, "http://directory.test:8080/soap?x=1", "directory.test")), result);
        QVERIFY(!find_proxy(ctx, nullptr, "h"));
        QVERIFY(!find_proxy(ctx, "u", nullptr));
        QVERIFY(!find_proxy(nullptr, "u", "h"));
        duk_destroy_heap(ctx);
    }

    void aScriptThatRemovesItsFunctionFailsLaterCalls()
    {
        duk_context* ctx = alloc_ctx("function FindProxyForURL(u, h) { FindProxyForURL = 5; return 'DIRECT'; }");
        QVERIFY(ctx);
        QCOMPARE(take(find_proxy(ctx, "http://a/", "a")), QStringLiteral("DIRECT"));
        QCOMPARE(take(find_proxy(ctx, "http://a/", "a")), QStringLiteral("<null>"));
        QVERIFY(QString::fromUtf8(pac_last_error(ctx)).contains("TypeError"));
        duk_destroy_heap(ctx);
    }

    void standardHelpers_data()
    {
        QTest::addColumn<QByteArray>("expression");
        QTest::addColumn<QString>("value");
        const QList<QPair<const char*, const char*>> rows = {
            {"isPlainHostName('www')", "true"},
            {"isPlainHostName('www.netscape.com')", "false"},
            {"dnsDomainIs('www.netscape.com', '.netscape.com')", "true"},
            {"dnsDomainIs('www.mcom.com', '.netscape.com')", "false"},
            {"localHostOrDomainIs('www.netscape.com', 'www.netscape.com')", "true"},
            {"localHostOrDomainIs('www', 'www.netscape.com')", "true"},
            {"localHostOrDomainIs('home.netscape.com', 'www.netscape.com')", "false"},
            {"dnsDomainLevels('www')", "0"},
            {"dnsDomainLevels('www.netscape.com')", "2"},
            {"shExpMatch('http://home.netscape.com/people/ari/index.html', '*/ari/*')", "true"},
            {"shExpMatch('abc', 'a?c')", "true"},
            {"shExpMatch('a.c', 'a.c')", "true"},
            {"shExpMatch('abc', 'a.c')", "false"},
            {"shExpMatch('abc', 'a[b]c')", "false"},
            {"shExpMatch('', '*')", "true"},
            {"shExpMatch('x', '')", "false"},
            {"shExpMatch('aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab', '*a*a*a*a*a*a*a*a*a*a*c')", "false"},
            {"dnsResolve('localhost')", "127.0.0.1"},
            {"dnsResolve('proxy.corp.example')", "10.20.30.40"},
            {"dnsResolve('nosuch.example')", "null"},
            {"isResolvable('localhost')", "true"},
            {"isResolvable('nosuch.example')", "false"},
            {"isInNet('198.95.249.79', '198.95.0.0', '255.255.0.0')", "true"},
            {"isInNet('198.96.249.79', '198.95.0.0', '255.255.0.0')", "false"},
            {"isInNet('localhost', '127.0.0.0', '255.0.0.0')", "true"},
            {"isInNet('proxy.corp.example', '10.0.0.0', '255.0.0.0')", "true"},
            {"isInNet('nosuch.example', '0.0.0.0', '0.0.0.0')", "false"},
            {"isInNet('1.2.3.4', 'garbage', '255.0.0.0')", "false"},
            {"isInNet('1.2.3.400', '1.0.0.0', '255.0.0.0')", "false"},
            {"convert_addr('1.2.3.4')", "16909060"},
            {"/^\\d+\\.\\d+\\.\\d+\\.\\d+$/.test(myIpAddress())", "true"},
            // The fixed clock: Friday 15 March 2024, 10:30:20, in UTC and in
            // the local zone (UTC here).
            {"weekdayRange('FRI')", "true"},
            {"weekdayRange('SAT', 'MON', 'GMT')", "false"},
            {"weekdayRange('FRI', 'MON')", "true"},
            {"weekdayRange('SAT', 'THU')", "false"},
            {"weekdayRange('fri')", "false"},
            {"weekdayRange()", "false"},
            {"dateRange(15)", "true"},
            {"dateRange(1, 14)", "false"},
            {"dateRange(20, 10)", "false"},
            {"dateRange(28, 16)", "true"},
            {"dateRange('MAR')", "true"},
            {"dateRange('NOV', 'MAR')", "true"},
            {"dateRange(2024)", "true"},
            {"dateRange(1, 'MAR', 31, 'MAR')", "true"},
            {"dateRange('MAR', 2024, 'APR', 2024)", "true"},
            {"dateRange(15, 'MAR', 2024, 15, 'MAR', 2024, 'GMT')", "true"},
            {"dateRange(16, 'MAR', 2024, 20, 'MAR', 2024)", "false"},
            {"dateRange(15, 'MAR')", "false"},
            {"dateRange(0)", "false"},
            {"dateRange(500)", "false"},
            {"dateRange()", "false"},
            {"timeRange(10)", "true"},
            {"timeRange(9, 17)", "true"},
            {"timeRange(9, 10)", "false"},
            {"timeRange(22, 11)", "true"},
            {"timeRange(10, 30, 10, 31)", "true"},
            {"timeRange(10, 30, 0, 10, 30, 21, 'GMT')", "true"},
            {"timeRange(10, 30, 21, 10, 31, 0)", "false"},
            {"timeRange('x')", "false"},
            {"timeRange(1, 2, 3)", "false"},
        };
        for (const auto& row : rows)
            QTest::newRow(row.first) << QByteArray(row.first) << QString::fromLatin1(row.second);
    }

    void standardHelpers()
    {
        QFETCH(QByteArray, expression);
        QFETCH(QString, value);
        duk_context* ctx = expressionContext();
        QVERIFY(ctx);
        const QString got = take(find_proxy(ctx, expression.constData(), ""));
        QVERIFY2(got == value, qPrintable(got + QStringLiteral(" / ") + QString::fromUtf8(pac_last_error(ctx))));
        duk_destroy_heap(ctx);
    }

    void theClockFollowsTheSystemUnlessFixed()
    {
        duk_context* ctx = alloc_ctx("function FindProxyForURL(u, h) { return String(dateRange(new Date().getUTCFullYear(), 'GMT')); }");
        QVERIFY(ctx);
        QCOMPARE(take(find_proxy(ctx, "", "")), QStringLiteral("true"));
        pac_set_time(ctx, 0.0);  // 1970
        QCOMPARE(take(find_proxy(ctx, "", "")), QStringLiteral("false"));
        pac_set_time(ctx, -1.0);
        QCOMPARE(take(find_proxy(ctx, "", "")), QStringLiteral("true"));
        duk_destroy_heap(ctx);
    }

    void callsHaveTheirOwnTimeAndTheHeapItsOwnMemory()
    {
        pac_set_limits(200, 4 * 1024 * 1024);
        duk_context* ctx = alloc_ctx("var keep = [];"
                                     "function FindProxyForURL(url, host) {"
                                     "  if (url === 'loop') for (;;) {}"
                                     "  if (url === 'grow') for (;;) keep.push('y'.repeat(50000) + keep.length);"
                                     "  return 'PROXY ok:1'; }");
        pac_set_limits(1000, 16 * 1024 * 1024);
        QVERIFY(ctx);
        for (int i = 0; i < 3; ++i) {
            QElapsedTimer clock;
            clock.start();
            QCOMPARE(take(find_proxy(ctx, "loop", "")), QStringLiteral("<null>"));
            QVERIFY(QString::fromUtf8(pac_last_error(ctx)).contains("timeout"));
            QVERIFY(clock.elapsed() < 2000);
            // Each call starts a fresh clock.
            QCOMPARE(take(find_proxy(ctx, "ok", "")), QStringLiteral("PROXY ok:1"));
        }
        QCOMPARE(take(find_proxy(ctx, "grow", "")), QStringLiteral("<null>"));
        // What it kept stays within the cap, and small calls still run.
        QVERIFY2(QString::fromUtf8(pac_last_error(ctx)).contains("Error"), pac_last_error(ctx));
        QCOMPARE(take(find_proxy(ctx, "ok", "")), QStringLiteral("PROXY ok:1"));
        duk_destroy_heap(ctx);
    }

    void theSystemResolverAnswersForLiterals()
    {
        pac_set_resolver(nullptr);
        duk_context* ctx = expressionContext();
        QVERIFY(ctx);
        QCOMPARE(take(find_proxy(ctx, "dnsResolve('127.0.0.1')", "")), QStringLiteral("127.0.0.1"));
        QCOMPARE(take(find_proxy(ctx, "isInNet('127.0.0.1', '127.0.0.0', '255.0.0.0')", "")), QStringLiteral("true"));
        duk_destroy_heap(ctx);
        pac_set_resolver(testResolver);
    }
};

QTEST_GUILESS_MAIN(TestPacEvaluator)
#include "tst_evaluator.moc"
