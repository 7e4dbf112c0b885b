#include "layout/CTavoLayoutWidget.h"

#include <cstring>

#include "log/GuiLog.h"

int CTavoLayoutWidget::s_count = 0;

CTavoLayoutWidget::CTavoLayoutWidget(QWidget* parent) : QWidget(parent)
{
    ++s_count;
    guiLog(2, "Created layout widget. Layout widget count = %d", s_count);
    // Widget events end at the manager, whichever subclass the host built.
    if (parent && parent->inherits("CTavoLayoutMgr")) {
        connect(this, SIGNAL(layoutWidgetSignal(QString, QString, int)), parent,
                SLOT(onWidgetEvent(QString, QString, int)));
    }
    setVisible(false);
}

CTavoLayoutWidget::~CTavoLayoutWidget()
{
    --s_count;
}

void CTavoLayoutWidget::moveAlong(QPoint& point, const char* mode, QPoint offset)
{
    QPoint target = point;
    if (mode && std::strcmp(mode, "moving") == 0)
        target = pos() + offset;
    m_anchor = point;
    move(target);
}

void CTavoLayoutWidget::raise()
{
    QWidget::raise();
    emit risen();
}

bool CTavoLayoutWidget::onWidgetEvent(QString e, QString data)
{
    emit layoutWidgetSignal(e, data, 0);
    return true;
}

bool CTavoLayoutWidget::onMgrEvent(int, int)
{
    return false;
}
