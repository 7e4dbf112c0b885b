#pragma once
// A real top-level surface of the GUI. This first form carries what the
// manager relies on: the registry's movement, the manager's events and the
// route of widget events to the manager. Painting of the object tree, styles
// and animations join it with the surfaces.
#include <QPoint>
#include <QString>
#include <QWidget>

class CTavoLayoutWidget : public QWidget
{
    Q_OBJECT
public:
    explicit CTavoLayoutWidget(QWidget* parent = nullptr);
    ~CTavoLayoutWidget() override;

    // "moving" moves by offset from the present position; any other mode to point.
    virtual void moveAlong(QPoint& point, const char* mode, QPoint offset);
    QPoint anchor() const { return m_anchor; }

    static int count() { return s_count; }

signals:
    void layoutWidgetSignal(QString signal, QString data, int type = 0);
    void risen();

public slots:
    virtual void raise();
    virtual bool onWidgetEvent(QString e, QString data);
    virtual bool onMgrEvent(int type, int data);

private:
    QPoint m_anchor;
    static int s_count;
};
