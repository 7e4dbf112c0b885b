#pragma once
// Shared by the view tests: a shown surface of 200x300 that hosts one view, real
// mouse and key events sent to it as Qt delivers them, and a view whose finger
// state can be read.
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QtTest>

#include "layout/CTavoLayoutWidget.h"
#include "widgets/CTavoView.h"
#include "widgets/KineticScrollPrivate.h"
#include "widgets/KineticScrollTicker.h"

namespace ViewTest {

const QRgb kWhite = qRgb(255, 255, 255);
const QRgb kBlue = qRgb(0, 0, 255);    // even rows
const QRgb kCyan = qRgb(0, 255, 255);  // odd rows
const QRgb kGreen = qRgb(0, 255, 0);   // the focused row
const QRgb kRed = qRgb(255, 0, 0);     // the scroll bar

// A view whose finger state the tests may read.
class ProbeView : public CTavoView
{
public:
    using CTavoView::CTavoView;
    int state() const { return d->state; }
    bool frameArmed() const { return d->ticker->isActive(); }
};

// The surface's sheet: `view` goes into the view's block, `extra` after it.
inline QByteArray sheet(const QByteArray& view, const QByteArray& extra = QByteArray())
{
    return "CTavoLayoutWidget { size: 200x300; location: 0:0; background: #ffffff; }"
           " CTavoView { size: 200x300; location: 0:0; " + view + " }"
           " CTavoScrollBar { size: 8x300; location: 192:0; bar-background: #ff0000; auto-hide-timeout: 1; }"
           " CTavoWidget#even { size: 200x40; background: #0000ff; background-focused: #00ff00; }"
           " CTavoWidget#odd { size: 200x40; background: #00ffff; background-focused: #00ff00; } " + extra;
}

struct Surface
{
    CTavoLayoutWidget widget;
    ProbeView* view;

    Surface() : view(new ProbeView(&widget)) {}
    void style(const QByteArray& text)
    {
        QByteArray copy = text;
        QByteArray attributes;
        widget.updateStyle(copy.data(), attributes.data(), true);
    }
    // A plain row of the sheet's even or odd look.
    CTavoWidget* row(int i)
    {
        auto* row = new CTavoWidget(&widget, 2);
        row->setObjectName(i % 2 ? "odd" : "even");
        row->layout();
        return row;
    }
    void mouse(QEvent::Type type, const QPoint& at)
    {
        const bool move = type == QEvent::MouseMove;
        QMouseEvent event(type, at, widget.mapToGlobal(at), move ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
    }
    // A finger from `from` by `step` per 16 ms, `steps` times, then lifted.
    void flick(QPoint from, const QPoint& step, int steps, bool lift = true)
    {
        mouse(QEvent::MouseButtonPress, from);
        for (int i = 0; i < steps; ++i) {
            QTest::qWait(16);
            mouse(QEvent::MouseMove, from += step);
        }
        if (lift)
            mouse(QEvent::MouseButtonRelease, from);
    }
    // Press and release of a key; whether the surface's filter took the press.
    bool key(int key, const QString& text = QString())
    {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
        const bool taken = QCoreApplication::sendEvent(&widget, &press) && press.isAccepted();
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&widget, &release);
        return taken;
    }
    QImage shot() { return widget.grab().toImage().convertToFormat(QImage::Format_RGB32); }
};

} // namespace ViewTest
