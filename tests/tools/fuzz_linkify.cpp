// libFuzzer target: link detection and HTML stripping on any text. Every link
// must lie inside the text it came from, and no input may take longer than
// the time cap: a pattern that backtracks without bound fails the run.
// First byte: bit 0 lenient search, bit 1 dial characters, bit 2 search the
// text as it is rather than stripped; the rest is UTF-8 text, at most kMaxText
// bytes of it (longer inputs are cut). Some patterns take time quadratic in
// the length of a run they almost match (a long "a.a.a..." for WEB_REGEX):
// the cap is set for that at kMaxText, and catches anything worse.
#include <QString>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "tools/CLinkify.h"

namespace {
const size_t kMaxText = 2048;
// CPU time, so that a busy machine does not fail the run.
const double kCapSeconds = 4.0;

double cpuSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
}

void check(const QString& text, const QList<LinkT>& links)
{
    for (const LinkT& l : links) {
        if (l.start < 0 || l.end > text.size() || l.start >= l.end || text.mid(l.start, l.end - l.start) != l.text) {
            std::fprintf(stderr, "link %d-%d outside its text of %d\n", l.start, l.end, int(text.size()));
            std::abort();
        }
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const uint8_t flags = data[0];
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data) + 1, int(qMin(size - 1, kMaxText)));
    const double begin = cpuSeconds();

    CLinkify::updatePhoneTelPatterns(flags & 2);
    const QString plain = (flags & 4) ? text : CLinkify::stripHtml(text);
    QList<LinkT> links = CLinkify::findLinks(plain, 0xff, flags & 1);
    check(plain, links);
    CLinkify::removeDuplicateLinks(links);
    CLinkify::reorderLinks(true, {QStringLiteral("example.com")}, links);
    check(plain, links);

    const double spent = cpuSeconds() - begin;
    if (spent > kCapSeconds) {
        std::fprintf(stderr, "%d characters took %.2f s of CPU, the cap is %.1f s\n", int(text.size()), spent, kCapSeconds);
        std::abort();
    }
    return 0;
}
