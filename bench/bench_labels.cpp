// A full screen of labels repainted again and again: our painted labels
// against the same screen built from QLabels under one QWidget and drawn with
// QWidget::render. Prints frames per second, heap allocations per frame and
// the heap bytes of one label, side by side.
//
// Allocations are counted by replacing malloc and friends in this program, so
// every allocation of Qt and of the library is seen. Under AddressSanitizer
// the sanitizer owns malloc; the counts are then reported as unavailable.
#include <QApplication>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QVector>
#include <QWidget>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>

#include "BenchSupport.h"

#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/TavoTextFormat.h"


namespace {

const int kScreenW = 800;
const int kScreenH = 480;
const int kColumns = 8;
const int kRows = 25;
const int kLabels = kColumns * kRows; // 200
const int kWarmFrames = 20;
const int kFrames = 300;

QString labelText(int i)
{
    // A mix of short texts and texts that have to be elided.
    static const char* const words[] = {"Anna", "Voicemail", "Missed call from reception",
                                        "Line 2", "Conference room B, third floor",
                                        "Do not disturb", "+49 711 1234567", "Settings"};
    return QString::fromLatin1(words[i % 8]) + QStringLiteral(" %1").arg(i);
}

QRect cell(int i)
{
    const int w = kScreenW / kColumns;
    const int h = kScreenH / kRows;
    return QRect((i % kColumns) * w, (i / kColumns) * h, w - 2, h);
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    const QFont font = benchFont(13);
    const QColor text(230, 230, 230);
    const QColor background(20, 30, 40);

    // Our screen: one surface, painted objects on it.
    QWidget surface;
    surface.resize(kScreenW, kScreenH);
    QVector<CTavoLabelWidget*> labels;
    // Labels styled by a skin share their colour's pen, as they do through layout().
    const QPen textPen = CTavoWidgetStyle::colorPen(text);
    for (int i = 0; i < kLabels; ++i) {
        const QRect r = cell(i);
        CTavoLabelWidget* label = new CTavoLabelWidget(&surface, r.x(), r.y(), r.width(), r.height());
        label->setStyle(font, textPen, 1 | 128 | TavoTextNoWrap);
        label->setText(labelText(i));
        labels.append(label);
    }
    QImage ours(kScreenW, kScreenH, QImage::Format_RGB32);
    const BenchRun tavo = benchFrames(kWarmFrames, kFrames, [&] {
        QPainter painter(&ours);
        painter.fillRect(ours.rect(), background);
        for (CTavoLabelWidget* label : qAsConst(labels))
            label->paint(&painter);
    });

    // The labels alone, without the painter's own begin and end.
    BenchRun labelsOnly;
    {
        QPainter painter(&ours);
        labelsOnly = benchFrames(kWarmFrames, kFrames, [&] {
            painter.fillRect(ours.rect(), background);
            for (CTavoLabelWidget* label : qAsConst(labels))
                label->paint(&painter);
        });
    }
    // The same screen from QLabels.
    QWidget root;
    root.resize(kScreenW, kScreenH);
    QPalette palette = root.palette();
    palette.setColor(QPalette::Window, background);
    palette.setColor(QPalette::WindowText, text);
    root.setPalette(palette);
    root.setAutoFillBackground(true);
    for (int i = 0; i < kLabels; ++i) {
        QLabel* label = new QLabel(labelText(i), &root);
        label->setFont(font);
        label->setGeometry(cell(i));
        label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    }
    root.ensurePolished();
    QImage theirs(kScreenW, kScreenH, QImage::Format_RGB32);
    const BenchRun qt = benchFrames(kWarmFrames, kFrames, [&] { root.render(&theirs); });

    // Heap bytes of one label with its text laid out, averaged over many. Only
    // the labels are made inside the counted windows: the holder, the list and
    // the scratch image the QLabels are drawn into come before, and the glyph
    // caches are warm from the frames above.
    const int kSamples = 200;
    QWidget holder;
    holder.resize(kScreenW, kScreenH);
    QImage scratch(kScreenW, kScreenH, QImage::Format_RGB32);
    holder.render(&scratch);
    QVector<CTavoLabelWidget*> extraTavo;
    extraTavo.reserve(kSamples);
    long long start = g_liveBytes.load();
    for (int i = 0; i < kSamples; ++i) {
        const QRect r = cell(i);
        CTavoLabelWidget* label = new CTavoLabelWidget(&holder, r.x(), r.y(), r.width(), r.height());
        label->setStyle(font, textPen, 1 | 128 | TavoTextNoWrap);
        label->setText(labelText(i));
        extraTavo.append(label);
    }
    const double tavoBytes = double(g_liveBytes.load() - start) / kSamples;
    start = g_liveBytes.load();
    for (int i = 0; i < kSamples; ++i) {
        QLabel* label = new QLabel(labelText(i), &holder);
        label->setFont(font);
        label->setGeometry(cell(i));
        label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    }
    holder.render(&scratch); // a QLabel lays its text out when first drawn
    const double qlabelBytes = double(g_liveBytes.load() - start) / kSamples;

#ifdef BENCH_NO_MALLOC_HOOKS
    const bool counted = false;
#else
    const bool counted = true;
#endif
    std::printf("bench_labels: %d labels on %dx%d, %d frames after %d warm-up frames, full repaint\n",
                kLabels, kScreenW, kScreenH, kFrames, kWarmFrames);
    std::printf("%-34s %12s %12s\n", "", "CTavoLabel", "QLabel");
    std::printf("%-34s %12.1f %12.1f   (x%.2f)\n", "frames per second", tavo.fps, qt.fps,
                tavo.fps / qt.fps);
    if (counted) {
        std::printf("%-34s %12.2f %12.2f\n", "heap allocations per frame",
                    tavo.allocationsPerFrame, qt.allocationsPerFrame);
        std::printf("%-34s %12.2f %12s\n", "  of which in painting the labels",
                    labelsOnly.allocationsPerFrame, "");
        std::printf("%-34s %12.0f %12.0f   (%.2f of QLabel)\n", "heap bytes per label, laid out",
                    tavoBytes, qlabelBytes, tavoBytes / qlabelBytes);
    } else {
        std::printf("%-34s %12s %12s\n", "heap allocations per frame", "n/a", "n/a");
        std::printf("%-34s %12s %12s\n", "heap bytes per label, laid out", "n/a", "n/a");
    }
    std::printf("%-34s %12zu %12zu\n", "sizeof object", sizeof(CTavoLabelWidget), sizeof(QLabel));
    std::printf("target: >= 3x frame rate, 0 allocations per frame, <= 0.50 of the memory\n");
    return 0;
}
