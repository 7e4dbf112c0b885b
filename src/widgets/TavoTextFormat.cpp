#include "widgets/TavoTextFormat.h"

#include <QPainter>
#include <QPen>
#include <QTextOption>

#include <algorithm>

const QString& tavoTextEllipsis()
{
    static const QString ellipsis(QChar(0x2026));
    return ellipsis;
}

namespace {

const QChar kLeftToRightMark(0x200E);
const QChar kRightToLeftMark(0x200F);

bool endsElided(const QString& text, bool elideFromLeft)
{
    return elideFromLeft ? text.startsWith(tavoTextEllipsis())
                         : text.endsWith(tavoTextEllipsis());
}

// "label: value" and "(...)" inside right-to-left text come out scrambled by
// the bidi algorithm; explicit marks keep them in reading order.
Qt::LayoutDirection repairDirection(QString& text)
{
    Qt::LayoutDirection direction = Qt::LayoutDirectionAuto;
    if (text.contains(tavoTextEllipsis()) || !text.isRightToLeft())
        return direction;
    const int colon = text.indexOf(QLatin1Char(':'));
    if (colon >= 0) {
        direction = Qt::LeftToRight;
        text.insert(0, kLeftToRightMark);
        // The position is the one from before the first mark went in.
        text.insert(colon + 1, kLeftToRightMark);
    }
    const int open = text.indexOf(QLatin1Char('('));
    if (open >= 0) {
        const int close = text.indexOf(QLatin1Char(')'), open + 1);
        const QString inner = text.mid(open + 1, close < 0 ? -1 : close - open - 1);
        if (inner.isRightToLeft())
            text.insert(open + 1, kRightToLeftMark);
    }
    return direction;
}

QTextOption::WrapMode wrapModeOf(int flags)
{
    if (flags & TavoTextNoWrap)
        return QTextOption::NoWrap;
    if (flags & TavoTextWordWrap)
        return (flags & TavoTextAnywhere) ? QTextOption::WrapAtWordBoundaryOrAnywhere
                                          : QTextOption::WordWrap;
    return QTextOption::WrapAnywhere;
}

// Shortens the text when the last line made is wider than the box (a word
// longer than the line, or no wrapping). Returns true when `text` changed.
bool fixLastLine(QFontMetrics* metrics, QTextLayout* layout, QString& text, int width,
                 bool elideFromLeft, bool wordWrap, int lines, QVector<int>& lineWidths)
{
    if (lines < 1)
        return false;
    QTextLine line = layout->lineAt(lines - 1);
    if (!line.isValid())
        return false;
    const int natural = int(line.naturalTextWidth());
    if (natural <= width)
        return false;
    const int start = line.textStart();
    const int length = line.textLength();
    const int excess = natural - width;
    const int perChar = std::max(natural / std::max(length, 1), metrics->averageCharWidth());
    const int drop = perChar > 0 ? excess / perChar : excess;
    const QString part = text.mid(start, length);
    QString replaced;
    if (!elideFromLeft) {
        replaced = part.left(std::max(length - std::max(drop, 3), 1)) + tavoTextEllipsis();
    } else if (!wordWrap) {
        replaced = tavoTextEllipsis() + part.right(std::max(length - drop - 3, 0));
    } else {
        lineWidths.resize(lines);
        for (int i = 0; i + 1 < lines; ++i)
            lineWidths[i] = int(layout->lineAt(i).naturalTextWidth() + 1);
        replaced = metrics->elidedText(part, Qt::ElideLeft, width, TavoTextWordWrap);
    }
    const QString rebuilt = text.left(start) + replaced + text.mid(start + length);
    if (rebuilt == text)
        return false;
    text = rebuilt;
    return true;
}

// The block runs past half of its box with text left over: shorten the whole
// text to the room of the lines made so far.
void elideOverflow(QFontMetrics* metrics, QTextLayout* layout, QString& text, int width,
                   bool elideFromLeft, bool leftWordWrap, int lines, QVector<int>& lineWidths)
{
    int total = lines * width;
    if (leftWordWrap && lines == 1) {
        text = metrics->elidedText(text, Qt::ElideLeft, total, 0);
        return;
    }
    if (leftWordWrap) {
        lineWidths.resize(lines);
        const int perLine = total / lines;
        for (int i = 0; i + 1 < lines; ++i)
            lineWidths[i] = int(layout->lineAt(i).naturalTextWidth() + 1);
        const int restStart = layout->lineAt(lines - 1).textStart();
        const QString rest =
            metrics->elidedText(text.mid(restStart), Qt::ElideLeft, perLine, TavoTextWordWrap);
        text = (text.left(restStart) + rest).trimmed();
        return;
    }
    const Qt::TextElideMode mode = elideFromLeft ? Qt::ElideLeft : Qt::ElideRight;
    QString shortened = metrics->elidedText(text, mode, total, 0);
    if (lines > 1 && total - metrics->horizontalAdvance(shortened) <= metrics->maxWidth()) {
        // Wrapping loses the tail of each line: measure what the lines really hold.
        total = 0;
        for (int i = 0; i < lines; ++i)
            total += int(layout->lineAt(i).naturalTextWidth());
        shortened = metrics->elidedText(text, mode, total, 0);
    }
    text = shortened;
}

} // namespace

QSize formatText(QFontMetrics* metrics, QTextLayout* layout, QString text, int width,
                 int height, int flags, bool* elided, bool elideFromLeft, int lineHeight,
                 QVector<int> lineWidths)
{
    if (!metrics || !layout)
        return QSize(-1, -1);

    const Qt::LayoutDirection direction = repairDirection(text);
    if (width < 1) {
        if (elided)
            *elided = endsElided(text, elideFromLeft);
        return QSize(0, 0);
    }

    QTextOption option{Qt::Alignment(flags)};
    option.setTextDirection(direction);
    const QTextOption::WrapMode mode = wrapModeOf(flags);
    option.setWrapMode(mode);

    layout->setText(text);
    layout->setTextOption(option);
    layout->beginLayout();
    const bool leftWordWrap = elideFromLeft && mode == QTextOption::WordWrap;
    const QString entering = text;
    const int leading = metrics->leading();

    int y = 0;
    int lines = 0;
    int widest = 0;
    bool changed = false;
    for (;;) {
        QTextLine line = layout->createLine();
        if (!line.isValid()) {
            if (y < height)
                changed = fixLastLine(metrics, layout, text, width, elideFromLeft,
                                      mode == QTextOption::WordWrap, lines, lineWidths);
            break;
        }
        int lineWidth = width;
        if (leftWordWrap && lines < lineWidths.size() && lineWidths.at(lines) != 0)
            lineWidth = lineWidths.at(lines);
        line.setLineWidth(lineWidth);
        ++lines;
        y += leading;
        if (y < height) {
            line.setPosition(QPointF(0, y));
            y += lineHeight != 0 ? lineHeight - leading : int(line.height());
            widest = std::max(widest, int(line.naturalTextWidth() + 1));
            changed = fixLastLine(metrics, layout, text, width, elideFromLeft,
                                  mode == QTextOption::WordWrap, lines, lineWidths);
            if (changed)
                break;
        }
        if (y > height / 2 && line.textStart() + line.textLength() < text.length()) {
            elideOverflow(metrics, layout, text, width, elideFromLeft, leftWordWrap, lines,
                          lineWidths);
            changed = text != entering;
            break;
        }
    }
    layout->endLayout();

    if (changed && text.length() < entering.length())
        return formatText(metrics, layout, text, width, height, flags, elided, elideFromLeft, 0,
                          lineWidths);
    if (elided)
        *elided = endsElided(text, elideFromLeft);
    return QSize(widest, y);
}

void paintTextLayoutWithClipping(QTextLayout* layout, QPainter* painter, int x, int y, int w,
                                 int h, const QRect& clip)
{
    Q_UNUSED(w);
    if (!layout || !painter || layout->lineCount() == 0)
        return;
    const int total = int(layout->lineAt(0).height() * layout->lineCount());
    if (total < h)
        y += (h - total) / 2;
    layout->draw(painter, QPointF(x, y), QVector<QTextLayout::FormatRange>(), clip);
}

void paintTextLayout(QTextLayout* layout, QPainter* painter, int x, int y, int w, int h)
{
    paintTextLayoutWithClipping(layout, painter, x, y, w, h, QRect());
}

void paintTextLayoutTop(QTextLayout* layout, QPainter* painter, int x, int y, int w, int h)
{
    Q_UNUSED(w);
    Q_UNUSED(h);
    if (!layout || !painter || layout->lineCount() == 0)
        return;
    layout->draw(painter, QPointF(x, y), QVector<QTextLayout::FormatRange>(), QRect());
}

void utilPaintText(QPainter* painter, const QRect& rect, int flags, const QString& text,
                   const QPen& pen, const QFont& font)
{
    if (!painter)
        return;
    // Measured with the painter's font: callers set it to the one they draw in.
    QFontMetrics metrics = painter->fontMetrics();
    QTextLayout layout(QString(), font);
    formatText(&metrics, &layout, text, rect.width(), rect.height(), flags);
    painter->setPen(pen);
    paintTextLayout(&layout, painter, rect.x(), rect.y(), rect.width(), rect.height());
}
