// The softkey bar: 1,000 set() calls alternating two different documents of
// six keys (pages of four with More), and 1,000 with the identical document,
// beside rebuilding the same row as QPushButtons in a QHBoxLayout each time.
// Prints time and heap allocations per call.
//
// Run from the run folder: the bar takes the sample skin's "softkeys" item.
// Allocations are counted by replacing malloc and friends in this program;
// under AddressSanitizer the counts are reported as unavailable.
#include <QApplication>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QPushButton>
#include <QWidget>

#include <cstdio>

#include "BenchSupport.h"

#include "CTXMLSoftkeys.h"
#include "style/CTavoStyleSheetFile.h"
#include "widgets/CTavoSoftkey.h"

namespace {

const char* const kFallbackStyle =
    "CTavoSoftkey { size: 800x64; location: 0:416; background: rgb(12, 18, 30); put-more-sk-at-page-end: true; }"
    "CTavoPageView#softkey-pageview { size: 800x56; location: 0:4; page-layout: 4x1; item-gap: 2; inter-page-gap: 4; }"
    "CTavoButton { size: 196x56; font: 18px DejaVu Sans; label-color: #ffffff; }";

CTXMLSoftkeys document(const char* word)
{
    CTXMLSoftkeys keys;
    for (int i = 0; i < 6; ++i) {
        const QByteArray label = QByteArray(word) + ' ' + QByteArray::number(i + 1);
        const QByteArray url = "softkey:" + QByteArray::number(540 + i) + '-' + word;
        keys.add(label.constData(), url.constData(), i);
    }
    return keys;
}

struct Figure
{
    double usPerCall = 0;
    double allocationsPerCall = 0;
};

template <typename Call>
Figure measure(int calls, Call call)
{
    call(0);
    call(1);  // both documents once: first-time set-up stays out of the figure
    const long long before = g_allocations.load();
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < calls; ++i)
        call(i);
    Figure f;
    f.usPerCall = double(timer.nsecsElapsed()) / 1000.0 / calls;
    f.allocationsPerCall = double(g_allocations.load() - before) / calls;
    return f;
}

void print(const char* what, const Figure& f)
{
#ifdef BENCH_NO_MALLOC_HOOKS
    std::printf("  %-52s %10.2f us   allocations n/a\n", what, f.usPerCall);
#else
    std::printf("  %-52s %10.2f us   %8.1f allocations\n", what, f.usPerCall, f.allocationsPerCall);
#endif
}

}  // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    benchFont(18);
    QWidget screen;
    screen.resize(800, 480);
    screen.show();

    CTavoSoftkey bar(&screen);
    CTavoStyleSheetFile skin;
    QString style;
    QString attributes;
    if (skin.parse(QStringLiteral("Skins/default/default.xml")) == 0 && skin.get(QStringLiteral("softkeys"))) {
        style = skin.getStyle(QStringLiteral("softkeys"));
        attributes = skin.getAttributes(QStringLiteral("softkeys"));
    } else {
        std::printf("(sample skin not found: run from the run folder; using a built-in style)\n");
        style = QString::fromLatin1(kFallbackStyle);
    }
    bar.updateStyle(style, attributes, true);

    const CTXMLSoftkeys first = document("Alpha");
    const CTXMLSoftkeys second = document("Beta");
    QList<int> excluded;
    const int calls = 1000;

    std::printf("Softkey bar, six keys on pages of four with More, per set():\n");
    const Figure changing = measure(calls, [&](int i) {
        bar.set(i % 2 ? second : first, excluded, SoftkeyLayoutDefault, false);
    });
    print("set, two documents in turn", changing);
    const Figure same = measure(calls, [&](int) { bar.set(first, excluded, SoftkeyLayoutDefault, false); });
    print("set, the identical document", same);

    // The same row as plain Qt: four buttons and More per page, built anew.
    QWidget row(&screen);
    row.setGeometry(0, 416, 800, 64);
    row.show();
    std::printf("QPushButtons in a QHBoxLayout, rebuilt per document:\n");
    const Figure widgets = measure(calls, [&](int i) {
        delete row.layout();
        qDeleteAll(row.findChildren<QPushButton*>(QString(), Qt::FindDirectChildrenOnly));
        auto* layout = new QHBoxLayout(&row);
        const char* word = i % 2 ? "Beta" : "Alpha";
        for (int n = 0; n < 3; ++n)
            layout->addWidget(new QPushButton(QStringLiteral("%1 %2").arg(QLatin1String(word)).arg(n + 1), &row));
        layout->addWidget(new QPushButton(QStringLiteral("More"), &row));
        layout->activate();
    });
    print("delete, 4 new buttons, layout", widgets);
    return 0;
}
