#pragma once
#include "tgui_export.h"
// Frame source of KineticScroll. Frames are paced by painting: every frame is
// armed once (by the first frame of a movement or by the owner's paint) and
// fires once. Between frames of one movement the Qt timer stays registered at
// the same interval, because re-registering a timer allocates inside Qt's
// event dispatcher and a scrolling frame must not allocate.
#include <QObject>
#include <QTime>
#include <QTimer>

class KineticScroll;

class TGUI_EXPORT KineticScrollTicker : public QObject
{
    Q_OBJECT

public:
    explicit KineticScrollTicker(KineticScroll* scroller);

    // Arms one frame after msec unless one is already pending.
    void start(int msec);
    void stop();
    // A frame is pending.
    bool isActive() const { return m_armed; }

    int frames;
    QTime time;

protected slots:
    void onTimeout();

private:
    KineticScroll* m_scroller;
    QTimer m_timer;
    bool m_armed;
};
