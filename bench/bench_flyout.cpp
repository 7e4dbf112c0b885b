// The flyout of a softkey with 20 entries: init() with the content it already
// shows (what every repeated softkey document costs), init() with other
// content each time (rows reused), and opening and closing it, beside a QMenu
// of 20 actions shown and hidden, the nearest Qt alternative. Prints time and
// heap allocations per call.
//
// Run from the run folder: the flyout takes the sample skin's "flyout" item.
// Allocations are counted by replacing malloc and friends in this program, so
// every allocation of Qt and of the library is seen. Under AddressSanitizer
// the sanitizer owns malloc; the counts are then reported as unavailable.
#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QMenu>
#include <QWidget>

#include <cstdio>

#include "BenchSupport.h"

#include "CTXMLFlyoutCluster.h"
#include "style/CTavoStyleSheetFile.h"
#include "widgets/CTavoFlyoutCluster.h"

namespace {

const int kItems = 20;

const char* const kFallbackStyle =
    "CTavoFlyoutCluster { size: 320x400; location: 0:0; background: rgb(14, 22, 38); items-offset-y: 76; }"
    "CTavoFlyoutItem { size: 308x40; background-focused: rgb(48, 110, 190); }"
    "CTavoFlyoutItem#flyout-group-div-item { size: 308x2; background: #4a6a94; }"
    "CTavoLabelWidget#flyout-item-label { font: 17px DejaVu Sans; color: #ffffff; }";

// 20 entries in groups of five, labelled with a word that differs between sets.
CTXMLFlyoutCluster content(const char* word)
{
    CTXMLFlyoutCluster cluster;
    for (int i = 0; i < kItems; ++i) {
        if (i % 5 == 4) {
            cluster.add("GROUPDIV", "GROUPDIV", "GROUPDIV", nullptr);
            continue;
        }
        const QByteArray label = QByteArray(word) + ' ' + QByteArray::number(i);
        const QByteArray url = "softkey:" + QByteArray::number(700 + i) + '-' + word;
        CTXMLIcon icon;
        icon.set(5 + i % 4);
        cluster.add(label.constData(), url.constData(), "", &icon, true, label.constData());
    }
    return cluster;
}

struct Figure
{
    double usPerCall = 0;
    double allocationsPerCall = 0;
};

template <typename Call>
Figure measure(int calls, Call call)
{
    call(0);  // caches and first-time set-up stay out of the figure
    const long long before = g_allocations.load();
    QElapsedTimer timer;
    timer.start();
    for (int i = 1; i <= calls; ++i)
        call(i);
    Figure f;
    f.usPerCall = double(timer.nsecsElapsed()) / 1000.0 / calls;
    f.allocationsPerCall = double(g_allocations.load() - before) / calls;
    return f;
}

void print(const char* what, const Figure& f)
{
#ifdef BENCH_NO_MALLOC_HOOKS
    std::printf("  %-44s %10.2f us   allocations n/a\n", what, f.usPerCall);
#else
    std::printf("  %-44s %10.2f us   %8.1f allocations\n", what, f.usPerCall, f.allocationsPerCall);
#endif
}

}  // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    benchFont(17);
    QWidget screen;
    screen.resize(800, 480);
    screen.show();

    CTavoFlyoutCluster flyout(&screen);
    CTavoStyleSheetFile skin;
    QString style;
    QString attributes;
    if (skin.parse(QStringLiteral("Skins/default/default.xml")) == 0 && skin.get(QStringLiteral("flyout"))) {
        style = skin.getStyle(QStringLiteral("flyout"));
        attributes = skin.getAttributes(QStringLiteral("flyout"));
    } else {
        std::printf("(sample skin not found: run from the run folder; using a built-in style)\n");
        style = QString::fromLatin1(kFallbackStyle);
    }
    flyout.updateStyle(style, attributes, true);

    CTXMLFlyoutCluster first = content("Alpha");
    CTXMLFlyoutCluster second = content("Beta");
    CTXMLFlyoutCluster copy = first;

    std::printf("Flyout of %d entries (4 dividers), per call:\n", kItems);
    const Figure same = measure(20000, [&](int) { flyout.init(&copy); });
    print("init, content equal to the shown one", same);
    const Figure changed = measure(400, [&](int i) { flyout.init(i % 2 ? &second : &first); });
    print("init, other content each time", changed);
    const Figure openClose = measure(400, [&](int) {
        flyout.flyOut();
        flyout.flyIn(false, CTavoFlyoutCluster::FlyinByOwner);
    });
    print("flyOut + flyIn", openClose);

    QMenu menu(&screen);
    for (int i = 0; i < kItems; ++i) {
        if (i % 5 == 4)
            menu.addSeparator();
        else
            menu.addAction(QStringLiteral("Alpha %1").arg(i));
    }
    std::printf("QMenu of %d actions, per call:\n", kItems);
    const Figure menuShowHide = measure(400, [&](int) {
        menu.popup(QPoint(400, 60));
        menu.hide();
    });
    print("popup + hide", menuShowHide);
    const Figure menuRebuild = measure(400, [&](int i) {
        menu.clear();
        for (int n = 0; n < kItems; ++n) {
            if (n % 5 == 4)
                menu.addSeparator();
            else
                menu.addAction(QStringLiteral("%1 %2").arg(i % 2 ? "Beta" : "Alpha").arg(n));
        }
        menu.popup(QPoint(400, 60));
        menu.hide();
    });
    print("clear, 20 new actions, popup + hide", menuRebuild);
    return 0;
}
