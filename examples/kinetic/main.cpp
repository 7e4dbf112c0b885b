// Finger scrolling on a long list of painted rows.
//
//   example_kinetic [--rows N] [--snap] [--show-fps]
//       A window to judge the feel by hand: drag, flick, press to stop,
//       pull past either end.
//   example_kinetic --headless out.csv [--plot out.png]
//       Runs two scripted gestures (a flick, and a flick past the top that
//       springs back) on a simulated clock of 30 ms frames, writes the
//       offset of every step to CSV and optionally plots offset per frame.
#include <QApplication>
#include <QCommandLineParser>
#include <QFile>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStaticText>
#include <QTextStream>
#include <QVector>
#include <QWidget>
#include <climits>
#include <cstdio>

#include "widgets/KineticScroll.h"

namespace {

const int kRowHeight = 48;
const int kFrameMs = 30;

// ---- interactive ------------------------------------------------------------

class RowList : public QWidget, public KineticScroll
{
public:
    RowList(int rows, bool snap) : m_rows(rows)
    {
        setWindowTitle("Kinetic scrolling");
        resize(320, 480);
        setOrientations(Qt::Vertical);
        if (snap)
            setSnapGridSize(QSize(1, kRowHeight));
        // Labels are made once: painting a frame must not build strings.
        m_labels.reserve(rows);
        for (int i = 0; i < rows; ++i)
            m_labels << QStaticText(QString("Row %1").arg(i + 1));
    }

    QPoint scrollOffset() const override { return m_offset; }
    void setScrollOffset(const QPoint& p) override
    {
        m_offset = p;
        update();
    }
    void zeroUnusedComponent(QPoint& p) override { p.setX(0); }

protected:
    void resizeEvent(QResizeEvent*) override
    {
        setMaxOffset(QPoint(0, qMax(0, m_rows * kRowHeight - height())));
        resetOffset(scrollOffset());
    }
    void mousePressEvent(QMouseEvent* e) override { handleMousePress(e); }
    void mouseMoveEvent(QMouseEvent* e) override { handleMouseMove(e); }
    void mouseReleaseEvent(QMouseEvent* e) override { handleMouseRelease(e); }

    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        p.fillRect(rect(), QColor(0x20, 0x24, 0x2a));
        const int first = qMax(0, m_offset.y() / kRowHeight);
        for (int i = first; i < m_rows; ++i) {
            const int y = i * kRowHeight - m_offset.y();
            if (y > height())
                break;
            const QRect row(0, y, width(), kRowHeight);
            p.fillRect(row, (i & 1) ? QColor(0x2c, 0x33, 0x3b) : QColor(0x34, 0x3c, 0x46));
            p.setPen(QColor(0xe0, 0xe6, 0xee));
            p.drawStaticText(16, y + (kRowHeight - 16) / 2, m_labels.at(i));
        }
        // Position indicator.
        const int content = m_rows * kRowHeight;
        if (content > height()) {
            const int h = qMax(20, height() * height() / content);
            const int y = (height() - h) * qBound(0, m_offset.y(), maxOffset().y()) /
                          qMax(1, maxOffset().y());
            p.fillRect(QRect(width() - 5, y, 3, h), QColor(0x80, 0xa0, 0xc0));
        }
        p.end();
        restartAutoScroll(kFrameMs);
    }

private:
    int m_rows;
    QPoint m_offset;
    QVector<QStaticText> m_labels;
};

// ---- headless ---------------------------------------------------------------

// The same machine on a clock that advances only when told, so the motion
// is the same on every run and every machine.
class Recorder : public KineticScroll
{
public:
    struct Sample {
        int frame;
        int timeMs;
        int offset;
        const char* phase;
    };

    QPoint scrollOffset() const override { return m_offset; }
    void setScrollOffset(const QPoint& p) override { m_offset = p; }
    void zeroUnusedComponent(QPoint& p) override { p.setX(0); }
    QTime currentTime() const override { return QTime::fromMSecsSinceStartOfDay(m_clock); }

    void start(int offset, int maxOffset)
    {
        setOrientations(Qt::Vertical);
        setMaxOffset(QPoint(0, maxOffset));
        m_offset = QPoint(0, offset);
        resetOffset(m_offset);
        m_samples.clear();
        m_frame = 0;
        record("rest");
    }
    // A finger moving dy every ms milliseconds, steps times, then lifted.
    void flick(QPoint at, int dy, int steps, int ms)
    {
        send(QEvent::MouseButtonPress, at);
        for (int i = 0; i < steps; ++i) {
            m_clock += ms;
            at.ry() += dy;
            send(QEvent::MouseMove, at);
            record("drag");
        }
        m_clock += ms;
        at.ry() += dy;
        send(QEvent::MouseButtonRelease, at);
        record("release");
        for (int i = 0; i < 500 && isBeingAutoScrolled(); ++i) {
            m_clock += kFrameMs;
            tick();
            record("frame");
        }
    }
    const QVector<Sample>& samples() const { return m_samples; }

private:
    void send(QEvent::Type type, QPoint at)
    {
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const Qt::MouseButtons buttons =
            type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent e(type, at, at, button, buttons, Qt::NoModifier);
        if (type == QEvent::MouseButtonPress)
            handleMousePress(&e);
        else if (type == QEvent::MouseMove)
            handleMouseMove(&e);
        else
            handleMouseRelease(&e);
    }
    void record(const char* phase) { m_samples << Sample{m_frame++, m_clock, m_offset.y(), phase}; }

    QPoint m_offset;
    int m_clock = 1000;
    int m_frame = 0;
    QVector<Sample> m_samples;
};

struct Scenario {
    QString name;
    QVector<Recorder::Sample> samples;
    QColor color;
};

QVector<Scenario> runScenarios()
{
    QVector<Scenario> out;
    Recorder r;
    // A flick upwards through the middle of a long list.
    r.start(3000, 20000);
    r.flick(QPoint(160, 400), -24, 8, 16);
    out << Scenario{"flick", r.samples(), QColor(0x1f, 0x77, 0xb4)};
    // A flick downwards close to the top: past the end and back.
    r.start(320, 20000);
    r.flick(QPoint(160, 100), 30, 6, 16);
    out << Scenario{"overshoot", r.samples(), QColor(0xd6, 0x27, 0x28)};
    return out;
}

bool writeCsv(const QString& path, const QVector<Scenario>& scenarios)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return false;
    }
    QTextStream out(&f);
    out << "scenario,frame,time_ms,offset,phase\n";
    for (const Scenario& s : scenarios)
        for (const Recorder::Sample& x : s.samples)
            out << s.name << ',' << x.frame << ',' << x.timeMs << ',' << x.offset << ','
                << x.phase << '\n';
    return true;
}

// One panel: offset against step for one scenario, with the legal range
// shaded and the spring zone past its ends marked.
void plotPanel(QPainter& p, const QRectF& area, const Scenario& s, const QString& title,
               int maxOffset, int spring)
{
    const int left = 70, right = 20, top = 28, bottom = 36;
    int maxFrame = 1, lo = INT_MAX, hi = INT_MIN;
    for (const Recorder::Sample& x : s.samples) {
        maxFrame = qMax(maxFrame, x.frame);
        lo = qMin(lo, x.offset);
        hi = qMax(hi, x.offset);
    }
    if (lo < 0)
        lo = -spring;  // show the whole spring zone when it is entered
    lo = (lo >= 0 ? lo / 100 : lo / 100 - 1) * 100;
    hi = (hi / 100 + 1) * 100;
    const QRectF plot(area.left() + left, area.top() + top, area.width() - left - right,
                      area.height() - top - bottom);
    auto map = [&](double frame, double value) {
        return QPointF(plot.left() + plot.width() * frame / maxFrame,
                       plot.bottom() - plot.height() * (value - lo) / double(hi - lo));
    };

    QFont font = p.font();
    font.setPixelSize(14);
    font.setBold(true);
    p.setFont(font);
    p.setPen(Qt::black);
    p.drawText(QRectF(area.left(), area.top() + 4, area.width(), 20), Qt::AlignCenter, title);
    font.setPixelSize(12);
    font.setBold(false);
    p.setFont(font);

    if (lo < 0) {
        p.fillRect(QRectF(map(0, 0), map(maxFrame, -spring)), QColor(0xfb, 0xe9, 0xe9));
        p.setPen(QPen(QColor(0xb0, 0x40, 0x40), 1, Qt::DashLine));
        p.drawLine(map(0, 0), map(maxFrame, 0));
        p.drawText(map(0.3, 0) + QPointF(0, 14), "end of the list (offset 0); spring zone of 100 px below");
    }
    if (maxOffset <= hi) {
        p.setPen(QPen(QColor(0xb0, 0x40, 0x40), 1, Qt::DashLine));
        p.drawLine(map(0, maxOffset), map(maxFrame, maxOffset));
    }
    const int stepY = (hi - lo) > 600 ? 200 : 100;
    p.setPen(QColor(0xdd, 0xdd, 0xdd));
    for (int v = lo; v <= hi; v += stepY)
        p.drawLine(map(0, v), map(maxFrame, v));
    for (int f = 0; f <= maxFrame; f += 5)
        p.drawLine(map(f, lo), map(f, hi));
    p.setPen(Qt::black);
    p.drawRect(plot);
    for (int v = lo; v <= hi; v += stepY)
        p.drawText(QRectF(area.left(), map(0, v).y() - 8, left - 8, 16),
                   Qt::AlignRight | Qt::AlignVCenter, QString::number(v));
    for (int f = 0; f <= maxFrame; f += 5)
        p.drawText(QRectF(map(f, lo).x() - 20, plot.bottom() + 3, 40, 14), Qt::AlignCenter,
                   QString::number(f));

    QPainterPath path;
    for (int i = 0; i < s.samples.size(); ++i) {
        const QPointF pt = map(s.samples[i].frame, s.samples[i].offset);
        if (i == 0)
            path.moveTo(pt);
        else
            path.lineTo(pt);
    }
    p.setPen(QPen(s.color, 2));
    p.drawPath(path);
    for (const Recorder::Sample& x : s.samples) {
        const bool finger = qstrcmp(x.phase, "frame") != 0;
        p.setBrush(finger ? QColor(Qt::white) : s.color);
        p.drawEllipse(map(x.frame, x.offset), 3.0, 3.0);
    }
    p.setBrush(Qt::NoBrush);
}

bool writePlot(const QString& path, const QVector<Scenario>& scenarios)
{
    const int w = 960, panelH = 330;
    const int h = 40 + panelH * scenarios.size() + 30;
    QImage img(w, h, QImage::Format_RGB32);
    img.fill(Qt::white);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    QFont font = p.font();
    font.setPixelSize(16);
    font.setBold(true);
    p.setFont(font);
    p.drawText(QRectF(0, 8, w, 24), Qt::AlignCenter, "Finger scrolling: offset (px) per step");

    int y = 40;
    for (const Scenario& s : scenarios) {
        const QString title =
            s.name == "flick"
                ? QString("Flick up through a long list from %1: coasts, 1 px/frame friction, "
                          "comes to rest")
                      .arg(s.samples.first().offset)
                : QString("Flick down from %1 past the top: overshoots into the spring zone "
                          "and springs back to exactly 0")
                      .arg(s.samples.first().offset);
        plotPanel(p, QRectF(0, y, w, panelH), s, title, 20000, 100);
        y += panelH;
    }
    font.setPixelSize(12);
    font.setBold(false);
    p.setFont(font);
    p.setPen(Qt::black);
    p.drawText(QRectF(0, h - 26, w, 20), Qt::AlignCenter,
               "step: open dots are finger events every 16 ms (drag and release), filled dots "
               "are frames of 30 ms");
    p.end();
    if (!img.save(path, "PNG")) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Finger scrolling on a long list");
    parser.addHelpOption();
    QCommandLineOption rowsOpt("rows", "Number of rows.", "n", "500");
    QCommandLineOption snapOpt("snap", "Snap to whole rows.");
    QCommandLineOption fpsOpt("show-fps", "Show the frame rate when a movement ends.");
    QCommandLineOption headlessOpt("headless", "Record scripted gestures to a CSV file.", "csv");
    QCommandLineOption plotOpt("plot", "With --headless: plot offset per frame to a PNG.", "png");
    parser.addOptions({rowsOpt, snapOpt, fpsOpt, headlessOpt, plotOpt});
    parser.process(app);

    if (parser.isSet(headlessOpt)) {
        const QVector<Scenario> scenarios = runScenarios();
        if (!writeCsv(parser.value(headlessOpt), scenarios))
            return 1;
        if (parser.isSet(plotOpt) && !writePlot(parser.value(plotOpt), scenarios))
            return 1;
        for (const Scenario& s : scenarios)
            std::printf("%-10s %3d steps, offset %d -> %d\n", qPrintable(s.name),
                        int(s.samples.size()), s.samples.first().offset, s.samples.last().offset);
        return 0;
    }

    KineticScroll::s_bShowFrameRate = parser.isSet(fpsOpt);
    RowList list(qBound(1, parser.value(rowsOpt).toInt(), 100000), parser.isSet(snapOpt));
    list.show();
    return app.exec();
}
