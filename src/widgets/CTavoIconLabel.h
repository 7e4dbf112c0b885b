#pragma once
#include "tgui_export.h"
// The small label of an icon: a count or a short text on a background image.
// Texts longer than two characters always take the big background.
#include <QPoint>
#include <QString>

#include "style/CTavoImage.h"
#include "widgets/CTavoLabelWidget.h"

class TGUI_EXPORT CTavoIconLabel : public CTavoLabelWidget
{
    Q_OBJECT

public:
    explicit CTavoIconLabel(QWidget* parent = nullptr);

    void set(int mode, const QString& text);
    void set(int mode, int number);

    int mode() const { return m_mode; }
    QPoint textOffset() const { return m_textOffset; }
    const CTavoImage& bigBackground() const { return m_bigBackground; }
    // The background that the present mode paints.
    const CTavoImage& modeImage() const { return m_mode == 1 ? m_bigBackground : m_backgroundImage; }

    void layout() override;
    void paint(QPainter* painter) override;
    // The owning icon paints its label itself, inverted or not.
    void paintOwned(QPainter* painter, bool inverted);

private:
    void paintLabel(QPainter* painter);

    int m_mode;
    CTavoImage m_bigBackground;
    QPoint m_textOffset;
};
