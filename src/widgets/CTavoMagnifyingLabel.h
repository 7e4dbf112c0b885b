#pragma once
#include "tgui_export.h"
// A small surface that shows the pressed character above a key of the
// on-screen keyboard, and hides itself after a while. Its style gives
// "offset" (from the key's point) and "timeout" (milliseconds, 0 = stay).
#include <QPoint>
#include <QString>

#include "layout/CTavoLayoutWidget.h"

class QTimer;
class CTavoLabelWidget;

class TGUI_EXPORT CTavoMagnifyingLabel : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    explicit CTavoMagnifyingLabel(QWidget* parent = nullptr);

    void layout() override;

    CTavoLabelWidget* label() const { return m_label; }
    QTimer* hideTimer() const { return m_hideTimer; }
    QPoint offset() const { return m_offset; }
    int timeout() const { return m_timeout; }

public slots:
    void onDisplayRequest(QString message, QPoint location, bool show);

private:
    CTavoLabelWidget* m_label;
    QTimer* m_hideTimer;
    QPoint m_offset;
    int m_timeout;
};
