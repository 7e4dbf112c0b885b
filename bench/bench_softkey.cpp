// The softkey bar: 1,000 set() calls alternating two different documents of
// six keys (pages of four with More), and 1,000 with the identical document,
// beside rebuilding the same row as QPushButtons in a QHBoxLayout each time.
// Prints time and heap allocations per call.
//
// Run from the run folder: the bar takes the sample skin's "softkeys" item.
// Allocations are counted by replacing malloc and friends in this program;
// under AddressSanitizer the counts are reported as unavailable.
#include <QApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QWidget>

#include <cstdio>

#include "BenchLibrary.h"
#include "BenchSupport.h"

#include "CTXMLSoftkeys.h"
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

// Both documents once first: first-time set-up stays out of the figure.
template <typename Call>
BenchPerCall measure(int calls, Call call)
{
    return benchPerCall(2, 0, calls, call);
}

void print(const char* what, const BenchPerCall& f)
{
    benchPrintPerCall(52, what, f);
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
    QString attributes;
    QString style = benchSkinStyle(QStringLiteral("softkeys"), kFallbackStyle, &attributes);
    bar.updateStyle(style, attributes, true);

    const CTXMLSoftkeys first = document("Alpha");
    const CTXMLSoftkeys second = document("Beta");
    QList<int> excluded;
    const int calls = 1000;

    std::printf("Softkey bar, six keys on pages of four with More, per set():\n");
    const BenchPerCall changing = measure(calls, [&](int i) {
        bar.set(i % 2 ? second : first, excluded, SoftkeyLayoutDefault, false);
    });
    print("set, two documents in turn", changing);
    const BenchPerCall same = measure(calls, [&](int) { bar.set(first, excluded, SoftkeyLayoutDefault, false); });
    print("set, the identical document", same);

    // The same row as plain Qt: four buttons and More per page, built anew.
    QWidget row(&screen);
    row.setGeometry(0, 416, 800, 64);
    row.show();
    std::printf("QPushButtons in a QHBoxLayout, rebuilt per document:\n");
    const BenchPerCall widgets = measure(calls, [&](int i) {
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
