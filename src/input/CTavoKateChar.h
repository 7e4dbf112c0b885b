#pragma once
#include "tgui_export.h"
// One cell of the multi-tap strip: a candidate character, drawn centred on the
// cell's background; the marked cell draws its text area in the label's
// highlight format.
#include <QChar>
#include <QRect>
#include <QString>

#include "widgets/CTavoLabelWidget.h"

class TGUI_EXPORT CTavoKateChar : public CTavoLabelWidget
{
    Q_OBJECT
public:
    explicit CTavoKateChar(QWidget* parent = nullptr);

    void setChar(QChar c);
    QChar character() const { return m_char; }
    // The rectangle the character is centred in: the cell less 1 on each side.
    QRect textRect() const { return m_textRect; }
    void setTextRect(const QRect& rect) { m_textRect = rect; }

    void paint(QPainter* painter) override;
    void layout() override;

private:
    QChar m_char;
    QRect m_textRect;
    QString m_charText;  // m_char as a string, made once per character
    QPen m_markedPen;    // the highlight's foreground and font, made in layout
    QFont m_markedFont;
};
