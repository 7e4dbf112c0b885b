// A 4x5 grid of buttons with an icon and two labels, repainted in full: our
// painted buttons on one layout widget against the same grid of QPushButtons
// with icons, both drawn with QWidget::render. Prints frames per second, heap
// allocations per frame and the heap bytes of one button, side by side.
//
// Allocations are counted by replacing malloc and friends in this program, so
// every allocation of Qt and of the library is seen. Under AddressSanitizer
// the sanitizer owns malloc; the counts are then reported as unavailable.
#include <QApplication>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QPushButton>
#include <QTemporaryDir>
#include <QVector>
#include <QWidget>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>

#include "BenchSupport.h"

#include "layout/CTavoLayoutWidget.h"
#include "style/CTavoIconRepository.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoLabelWidget.h"


namespace {

const int kScreenW = 800;
const int kScreenH = 480;
const int kColumns = 4;
const int kRows = 5;
const int kButtons = kColumns * kRows; // 20
const int kWarmFrames = 20;
const int kFrames = 300;
const int kIcon = 5; // "Messages" of the icon table

QRect cell(int i)
{
    const int w = kScreenW / kColumns;
    const int h = kScreenH / kRows;
    return QRect((i % kColumns) * w + 2, (i / kColumns) * h + 2, w - 4, h - 4);
}

QString mainText(int i)
{
    static const char* const words[] = {"Messages", "Contacts", "Call history", "Settings", "Conference"};
    return QString::fromLatin1(words[i % 5]) + QStringLiteral(" %1").arg(i);
}

const char* const kStyle =
    "CTavoLayoutWidget { size: 800x480; location: 0:0; background: rgb(20, 30, 40); }"
    "CTavoButton { size: 196x92; background: rgb(44, 62, 88); background-focused: rgb(48, 110, 190);"
    " border: 1px solid rgb(58, 78, 106); font: 15px DejaVu Sans; color: #e6e6e6; text-align: hcenter bottom;"
    " padding: 4; alt-label-size: 30x18; icon-align: hcenter vcenter; render-quality: normalq; }"
    "CTavoIcon { size: 32x32; }";

CTavoButton* makeButton(QWidget* surface, int i)
{
    CTavoButton* button = new CTavoButton(surface);
    TavoButtonSettings settings;
    settings.set(QString(), mainText(i), QStringLiteral("bench:%1").arg(i), QString(), QString(),
                 CTavoIconDefinition(QString(), QString(), kIcon), QString::number(i % 10), i);
    button->init(&settings);
    const QRect r = cell(i);
    button->move(r.x(), r.y());
    return button;
}

QPushButton* makePushButton(QWidget* parent, const QIcon& icon, const QFont& font, int i)
{
    QPushButton* button = new QPushButton(icon, mainText(i) + QStringLiteral("  ") + QString::number(i % 10), parent);
    button->setIconSize(QSize(32, 32));
    button->setFont(font);
    button->setGeometry(cell(i));
    return button;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    const QFont font = benchFont(15);

    // One raster icon file, shared by both grids.
    QTemporaryDir dir;
    QImage picture(32, 32, QImage::Format_ARGB32);
    picture.fill(QColor(120, 200, 255));
    const QString iconFile = dir.path() + QStringLiteral("/Messages.png");
    picture.save(iconFile, "PNG");
    iconRepository.setIconPath(dir.path() + QStringLiteral("/"));
    iconRepository.clear();
    const QIcon qicon(iconFile);

    // Our grid: one surface, painted buttons on it.
    CTavoLayoutWidget surface;
    QByteArray style(kStyle);
    QByteArray attributes;
    surface.updateStyle(style.data(), attributes.data(), true);
    for (int i = 0; i < kButtons; ++i)
        makeButton(&surface, i);
    QImage ours(kScreenW, kScreenH, QImage::Format_RGB32);
    const BenchRun tavo = benchFrames(kWarmFrames, kFrames, [&] { surface.render(&ours); });

    // The buttons alone, without QWidget::render around them.
    BenchRun buttonsOnly;
    {
        const QList<CTavoWidget*> painted = surface.findChildren<CTavoWidget*>();
        QPainter painter(&ours);
        buttonsOnly = benchFrames(kWarmFrames, kFrames, [&] {
            painter.fillRect(ours.rect(), QColor(20, 30, 40));
            for (CTavoWidget* widget : painted)
                if (widget->isVisible())
                    widget->paint(&painter);
        });
    }

    // The same grid of QPushButtons.
    QWidget root;
    root.resize(kScreenW, kScreenH);
    QPalette palette = root.palette();
    palette.setColor(QPalette::Window, QColor(20, 30, 40));
    root.setPalette(palette);
    root.setAutoFillBackground(true);
    for (int i = 0; i < kButtons; ++i)
        makePushButton(&root, qicon, font, i);
    root.ensurePolished();
    QImage theirs(kScreenW, kScreenH, QImage::Format_RGB32);
    const BenchRun qt = benchFrames(kWarmFrames, kFrames, [&] { root.render(&theirs); });

    // Heap bytes of one button with icon and labels, laid out and drawn once, averaged.
    // Only the buttons are made inside the counted windows: holders and the scratch
    // image come before, and a first render of each holder warms its caches.
    const int kSamples = 100;
    CTavoLayoutWidget holder;
    holder.updateStyle(style.data(), attributes.data(), true);
    QImage scratch(kScreenW, kScreenH, QImage::Format_RGB32);
    holder.render(&scratch);
    long long start = g_liveBytes.load();
    for (int i = 0; i < kSamples; ++i)
        makeButton(&holder, i % kButtons);
    holder.render(&scratch);
    const double tavoBytes = double(g_liveBytes.load() - start) / kSamples;
    QWidget pushHolder;
    pushHolder.resize(kScreenW, kScreenH);
    pushHolder.render(&scratch);
    start = g_liveBytes.load();
    for (int i = 0; i < kSamples; ++i)
        makePushButton(&pushHolder, qicon, font, i % kButtons);
    pushHolder.render(&scratch); // a QPushButton is polished and sized when first drawn
    const double pushBytes = double(g_liveBytes.load() - start) / kSamples;

    // Where a button's bytes go: its parts on their own.
    start = g_liveBytes.load();
    for (int i = 0; i < kSamples; ++i) {
        CTavoLabelWidget* label = new CTavoLabelWidget(&holder);
        label->setText(mainText(i));
    }
    const double labelBytes = double(g_liveBytes.load() - start) / kSamples;
    start = g_liveBytes.load();
    for (int i = 0; i < kSamples; ++i)
        new CTavoIcon(&holder);
    const double iconBytes = double(g_liveBytes.load() - start) / kSamples;

#ifdef BENCH_NO_MALLOC_HOOKS
    const bool counted = false;
#else
    const bool counted = true;
#endif
    std::printf("bench_buttons: %dx%d grid of buttons with icon and two labels on %dx%d, %d frames after %d warm-up frames, full repaint\n",
                kColumns, kRows, kScreenW, kScreenH, kFrames, kWarmFrames);
    std::printf("%-34s %12s %12s\n", "", "CTavoButton", "QPushButton");
    std::printf("%-34s %12.1f %12.1f   (x%.2f)\n", "frames per second", tavo.fps, qt.fps, tavo.fps / qt.fps);
    std::printf("%-34s %12.1f %12s\n", "  buttons painted alone", buttonsOnly.fps, "");
    if (counted) {
        std::printf("%-34s %12.2f %12.2f\n", "heap allocations per frame", tavo.allocationsPerFrame,
                    qt.allocationsPerFrame);
        std::printf("%-34s %12.2f %12s\n", "  of which in painting the buttons", buttonsOnly.allocationsPerFrame, "");
        std::printf("%-34s %12.0f %12.0f   (%.2f of QPushButton)\n", "heap bytes per button, laid out",
                    tavoBytes, pushBytes, tavoBytes / pushBytes);
        std::printf("%-34s %12.0f %12.0f\n", "  a label with text, an empty icon", labelBytes, iconBytes);
    } else {
        std::printf("%-34s %12s %12s\n", "heap allocations per frame", "n/a", "n/a");
        std::printf("%-34s %12s %12s\n", "heap bytes per button, laid out", "n/a", "n/a");
    }
    std::printf("%-34s %12zu %12zu\n", "sizeof object", sizeof(CTavoButton), sizeof(QPushButton));
    std::printf("target: 0 allocations per frame, <= 1.00 of the memory\n");
    iconRepository.clear();
    return 0;
}
