// The UI report of a screen of about 300 components: the manager's whole
// report (walk, elements, attributes, text with an indent of 4) with test
// automation on, beside the floor of writing the same tree of the same objects
// straight out with QXmlStreamWriter. Then painting the screen with the flag
// off and on: heap allocations per frame (the target is 0 for the report's
// part) and the bytes the widgets hold for the report.
#include <QApplication>
#include <QBuffer>
#include <QDomDocument>
#include <QImage>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "BenchSupport.h"

#include "layout/CTavoLayoutMgr.h"
#include "layout/CTavoLayoutWidget.h"
#include "tools/TavoToolFlags.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoLabelWidget.h"

namespace {

const int kScreenW = 800;
const int kScreenH = 480;
const int kButtons = 60;  // each a button, its icon and its label
const int kLabels = 120;
const int kRuns = 50;

const char* const kStyle =
    "CTavoLayoutWidget { size: 800x480; location: 0:0; background: rgb(20, 30, 40); }"
    "CTavoButton { size: 96x40; background: rgb(44, 62, 88); font: 13px DejaVu Sans; color: #e6e6e6;"
    " text-align: hcenter bottom; icon-align: left vcenter; }"
    "CTavoIcon { size: 16x16; }"
    "CTavoLabelWidget { font: 13px DejaVu Sans; color: #e6e6e6; }";

// What QXmlStreamWriter writes for one object: the same names and values as the report.
void writeObject(QXmlStreamWriter& xml, QObject* object)
{
    auto* widget = qobject_cast<CTavoWidget*>(object);
    if (!widget || !widget->isVisible())
        return;
    xml.writeStartElement(QStringLiteral("component"));
    xml.writeAttribute(QStringLiteral("type"), QString::fromLatin1(widget->metaObject()->className()));
    xml.writeAttribute(QStringLiteral("size"), QStringLiteral("%1x%2").arg(widget->width()).arg(widget->height()));
    const QPoint at = widget->parentWidget()->mapToGlobal(widget->topLeft());
    xml.writeAttribute(QStringLiteral("pos"), QStringLiteral("%1:%2").arg(at.x()).arg(at.y()));
    if (!widget->objectName().isEmpty())
        xml.writeAttribute(QStringLiteral("name"), widget->objectName());
    if (auto* button = qobject_cast<CTavoButton*>(widget)) {
        xml.writeAttribute(QStringLiteral("label"), button->labelWidget()->text());
        xml.writeAttribute(QStringLiteral("action-released"), button->url());
        xml.writeAttribute(QStringLiteral("icon-ids"), button->icon()->iconIds());
    } else if (auto* label = qobject_cast<CTavoLabelWidget*>(widget)) {
        xml.writeAttribute(QStringLiteral("label"), label->text());
    } else if (auto* icon = qobject_cast<CTavoIcon*>(widget)) {
        xml.writeAttribute(QStringLiteral("icon-ids"), icon->iconIds());
    }
    for (QObject* child : widget->children())
        writeObject(xml, child);
    xml.writeEndElement();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchFont(13);

    CTavoLayoutMgr mgr(nullptr, Qt::WindowFlags(), true);
    mgr.setGeometry(0, 0, kScreenW, kScreenH);
    auto* screen = new CTavoLayoutWidget(&mgr);
    screen->setObjectName(QStringLiteral("screen"));
    QByteArray style(kStyle);
    QByteArray attributes;
    screen->updateStyle(style.data(), attributes.data(), true);
    screen->setGeometry(0, 0, kScreenW, kScreenH);
    for (int i = 0; i < kButtons; ++i) {
        auto* button = new CTavoButton(screen);
        TavoButtonSettings settings;
        settings.set(QStringLiteral("key%1").arg(i), QStringLiteral("Key %1").arg(i), QStringLiteral("bench:%1").arg(i),
                     QString(), QString(), CTavoIconDefinition(QString(), QString(), -1, -1, QList<int>{i % 7}),
                     QString(), i);
        button->init(&settings);
        button->setObjectName(settings.m_name);
        button->move((i % 8) * 100, (i / 8) * 44);
    }
    for (int i = 0; i < kLabels; ++i) {
        auto* label = new CTavoLabelWidget(screen, QStringLiteral("Line %1 of the list").arg(i));
        label->setObjectName(QStringLiteral("line%1").arg(i));
        label->setgeo(QRect((i % 4) * 200, 340 + (i / 4) * 4, 190, 14));
    }
    mgr.show();
    screen->show();
    QApplication::processEvents();
    QImage frame(kScreenW, kScreenH, QImage::Format_RGB32);
    const auto paint = [&] { screen->render(&frame); };

    // Painting with the flag off: nothing of the report may appear.
    tavoToolSetTestAutomationFlag(false);
    const BenchRun off = benchFrames(20, 200, paint);
    long long heldOff = 0;
    for (CTavoWidget* w : screen->findChildren<CTavoWidget*>())
        heldOff += w->dom().isNull() ? 0 : 1;
    const long long beforeAsk = g_allocations.load();
    mgr.collectAndDumpUiXml(false);  // asked while off: nothing is built
    const long long askedOff = g_allocations.load() - beforeAsk;

    // The manager's report with the flag on.
    tavoToolSetTestAutomationFlag(true);
    std::vector<double> reportMs;
    long long reportAllocations = 0;
    int components = 0;
    int reportBytes = 0;
    for (int run = 0; run < kRuns; ++run) {
        const long long before = g_allocations.load();
        QElapsedTimer timer;
        timer.start();
        mgr.collectAndDumpUiXml(false);
        reportMs.push_back(timer.nsecsElapsed() / 1e6);
        reportAllocations = g_allocations.load() - before;
    }
    reportBytes = mgr.uiDocument().toString(4).toUtf8().size();
    components = mgr.uiDocument().elementsByTagName(QStringLiteral("component")).size();
    long long heldOn = 0;
    const long long liveBefore = g_liveBytes.load();
    for (CTavoWidget* w : screen->findChildren<CTavoWidget*>())
        heldOn += w->dom().isNull() ? 0 : 1;

    // The floor: the same objects written straight out, indented the same way.
    std::vector<double> floorMs;
    long long floorAllocations = 0;
    int floorBytes = 0;
    for (int run = 0; run < kRuns; ++run) {
        const long long before = g_allocations.load();
        QElapsedTimer timer;
        timer.start();
        QByteArray out;
        QBuffer buffer(&out);
        buffer.open(QIODevice::WriteOnly);
        QXmlStreamWriter xml(&buffer);
        xml.setAutoFormatting(true);
        xml.setAutoFormattingIndent(4);
        xml.writeStartElement(QStringLiteral("window"));
        xml.writeStartElement(QStringLiteral("window"));
        for (QObject* child : screen->children())
            writeObject(xml, child);
        xml.writeEndElement();
        xml.writeEndElement();
        buffer.close();
        floorMs.push_back(timer.nsecsElapsed() / 1e6);
        floorAllocations = g_allocations.load() - before;
        floorBytes = out.size();
    }

    // Painting with the flag on, after reports were made.
    const BenchRun on = benchFrames(20, 200, paint);
    (void)liveBefore;

#ifdef BENCH_NO_MALLOC_HOOKS
    const bool counted = false;
#else
    const bool counted = true;
#endif
    std::printf("bench_uireport: one %dx%d screen of %d reported components (%d buttons with icon and label, %d labels), "
                "median of %d runs\n",
                kScreenW, kScreenH, components, kButtons, kLabels, kRuns);
    std::printf("%-40s %14s %18s\n", "", "UI report", "QXmlStreamWriter");
    std::printf("%-40s %14.2f %18.2f   (x%.1f)\n", "ms per report", median(reportMs), median(floorMs),
                median(reportMs) / median(floorMs));
    std::printf("%-40s %14d %18d\n", "bytes of XML", reportBytes, floorBytes);
    if (counted)
        std::printf("%-40s %14lld %18lld\n", "heap allocations per report", reportAllocations, floorAllocations);
    std::printf("widgets holding a report element: %lld with the flag off, %lld after reports with it on\n", heldOff,
                heldOn);
    if (counted) {
        std::printf("report asked for with the flag off: %lld allocations\n", askedOff);
        std::printf("heap allocations per painted frame: %.2f with the flag off, %.2f with it on (%.1f / %.1f fps)\n",
                    off.allocationsPerFrame, on.allocationsPerFrame, off.fps, on.fps);
    } else {
        std::printf("heap allocations: n/a (sanitizer build)\n");
    }
    return 0;
}
