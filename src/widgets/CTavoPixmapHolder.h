#pragma once
#include "tgui_export.h"
// An element that paints a pixmap it does not own and passes presses on it
// to whoever listens, without taking them.
#include <QEvent>
#include <QPixmap>

#include "widgets/CTavoWidget.h"

class TGUI_EXPORT CTavoPixmapHolder : public CTavoWidget
{
    Q_OBJECT
public:
    explicit CTavoPixmapHolder(QWidget* parent = nullptr, int x = 0, int y = 0, int w = 0, int h = 0);

    void setPixmap(QPixmap* pixmap) { m_pixmap = pixmap; }
    QPixmap* pixmap() const { return m_pixmap; }

    void paint(QPainter* painter) override;
    bool handleEvent(QEvent::Type type, QPoint position) override;
    using CTavoWidget::handleEvent;

signals:
    void forwardEvent(QEvent::Type type, int buttonId, int x, int y);

private:
    QPixmap* m_pixmap;
};
