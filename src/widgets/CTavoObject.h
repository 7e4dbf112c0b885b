#pragma once
#include "tgui_export.h"
// The root of the painted object tree: a QObject that is its own geometry.
// No window-system identity; a surface or a view paints and hit-tests it.
#include <QEvent>
#include <QObject>
#include <QPoint>
#include <QRect>

class TGUI_EXPORT CTavoObject : public QObject, public QRect
{
    Q_OBJECT

public:
    explicit CTavoObject(QObject* parent = nullptr);
    CTavoObject(QObject* parent, const QRect& geometry);
    ~CTavoObject() override;

    bool isVisible() const { return m_visible; }
    bool isInitialized() const { return m_initialized; }
    void setInitialized(bool initialized) { m_initialized = initialized; }
    bool isFocused() const { return m_focused; }
    bool isEnabled() const { return m_enabled; }
    bool isFocusable() const { return m_focusable; }
    void setFocusable(bool focusable) { m_focusable = focusable; }
    quint64 rowId() const { return m_rowId; }
    void setRowId(quint64 rowId) { m_rowId = rowId; }

    // The rectangle part of this object, for code that must not see the QObject.
    const QRect& rect() const { return *this; }

    virtual void setVisible(bool visible);
    virtual void setFocused(bool focused);
    virtual void setEnabled(bool enabled);
    virtual void move(int x, int y);
    virtual bool handleEvent(QEvent::Type type, QPoint position);
    virtual bool handleEvent(QEvent::Type type, int value);

protected:
    bool m_visible;
    uint m_initialized : 1;
    uint m_focused : 1;
    uint m_enabled : 1;
    uint m_focusable : 1;
    quint64 m_rowId;
};
