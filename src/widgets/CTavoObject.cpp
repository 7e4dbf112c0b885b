#include "widgets/CTavoObject.h"

CTavoObject::CTavoObject(QObject* parent)
    : QObject(parent)
    , QRect()
    , m_visible(false)
    , m_initialized(false)
    , m_focused(false)
    , m_enabled(false)
    , m_focusable(false)
    , m_rowId(0)
{
}

CTavoObject::CTavoObject(QObject* parent, const QRect& geometry)
    : CTavoObject(parent)
{
    QRect::operator=(geometry);
}

CTavoObject::~CTavoObject() = default;

void CTavoObject::setVisible(bool visible)
{
    m_visible = visible;
}

void CTavoObject::setFocused(bool focused)
{
    m_focused = focused;
}

void CTavoObject::setEnabled(bool enabled)
{
    m_enabled = enabled;
}

void CTavoObject::move(int x, int y)
{
    translate(x - left(), y - top());
}

bool CTavoObject::handleEvent(QEvent::Type, QPoint)
{
    return false;
}

bool CTavoObject::handleEvent(QEvent::Type, int)
{
    return false;
}
