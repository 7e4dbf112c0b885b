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
#include <QMenu>
#include <QWidget>

#include <cstdio>

#include "BenchLibrary.h"
#include "BenchSupport.h"

#include "CTXMLFlyoutCluster.h"
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

// One call first: caches and first-time set-up stay out of the figure.
template <typename Call>
BenchPerCall measure(int calls, Call call)
{
    return benchPerCall(1, 1, calls, call);
}

void print(const char* what, const BenchPerCall& f)
{
    benchPrintPerCall(44, what, f);
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
    QString attributes;
    QString style = benchSkinStyle(QStringLiteral("flyout"), kFallbackStyle, &attributes);
    flyout.updateStyle(style, attributes, true);

    CTXMLFlyoutCluster first = content("Alpha");
    CTXMLFlyoutCluster second = content("Beta");
    CTXMLFlyoutCluster copy = first;

    std::printf("Flyout of %d entries (4 dividers), per call:\n", kItems);
    const BenchPerCall same = measure(20000, [&](int) { flyout.init(&copy); });
    print("init, content equal to the shown one", same);
    const BenchPerCall changed = measure(400, [&](int i) { flyout.init(i % 2 ? &second : &first); });
    print("init, other content each time", changed);
    const BenchPerCall openClose = measure(400, [&](int) {
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
    const BenchPerCall menuShowHide = measure(400, [&](int) {
        menu.popup(QPoint(400, 60));
        menu.hide();
    });
    print("popup + hide", menuShowHide);
    const BenchPerCall menuRebuild = measure(400, [&](int i) {
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
