#pragma once
#include "tgui_export.h"
// The state of one KineticScroll, kept out of the mix-in so that owners
// (views, flyout clusters) stay small and binary-stable.
#include <QList>
#include <QPoint>
#include <QPointer>
#include <QSize>
#include <QTime>
#include <QWidget>

class KineticScrollTicker;
class QEvent;

class TGUI_EXPORT KineticScrollPrivate
{
public:
    KineticScrollPrivate();

    int state;                       // KineticScroll::State
    int threshold;
    Qt::Orientations orientations;
    QPoint pressPos;
    QPoint lastDelta;
    QTime lastTime;
    QPoint offset;
    QPoint maxOffset;
    int maxSpeed;
    bool scrollingClipped;
    QPoint targetOffset;
    int scrollSpringLength;
    int swipeDirection;              // 0 none, 1 up, 2 down, 3 left, 4 right
    QPoint speed;                    // pixels per frame, sign of finger movement
    int easeOutLength;
    double easeOutRate;
    KineticScrollTicker* ticker;
    QPointer<QWidget> acceptMouseClick;
    QList<QEvent*> ignoreList;
    double lastFrameRate;
    QSize snapGridSize;
    double offsetScale;
    double momentumFactor;
    QPoint lastOffset;
    QPoint lastMousePos;
};
