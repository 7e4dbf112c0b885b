#include "widgets/KineticScrollTicker.h"

#include <QPointer>

#include "widgets/KineticScroll.h"

KineticScrollTicker::KineticScrollTicker(KineticScroll* scroller)
    : frames(0), m_scroller(scroller), m_armed(false)
{
    m_timer.setSingleShot(false);
    connect(&m_timer, SIGNAL(timeout()), this, SLOT(onTimeout()));
}

void KineticScrollTicker::start(int msec)
{
    if (m_armed)
        return;
    m_armed = true;
    msec = qMax(0, msec);
    // Same pace as the last frame: the registered timer fires on its own.
    if (msec > 0 && m_timer.isActive() && m_timer.interval() == msec)
        return;
    m_timer.start(msec);
}

void KineticScrollTicker::stop()
{
    m_armed = false;
    m_timer.stop();
}

void KineticScrollTicker::onTimeout()
{
    if (!m_armed) {
        // Nothing painted since the last frame: pause until something does.
        m_timer.stop();
        return;
    }
    m_armed = false;
    if (m_timer.interval() == 0)
        m_timer.stop();  // an immediate frame fires once
    QPointer<KineticScrollTicker> alive(this);
    m_scroller->tick();
    if (alive)
        ++frames;
}
