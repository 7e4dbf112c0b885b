#include "widgets/CTavoScrollBar.h"

#include <QDomElement>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <QWidget>
#include <climits>

#include "log/GuiLog.h"
#include "tools/TavoToolFlags.h"
#include "style/CTavoWidgetStyle.h"

namespace {

const int kMinimumBarLength = 10;
const int kFastestRepeatMs = 50;

// A double to int that saturates instead of overflowing; NaN becomes 0.
int toInt(double v)
{
    if (!(v == v))
        return 0;
    if (v >= double(INT_MAX))
        return INT_MAX;
    if (v <= double(INT_MIN))
        return INT_MIN;
    return int(v);
}

int sum(int a, qint64 b)
{
    return int(qBound<qint64>(INT_MIN, qint64(a) + b, INT_MAX));
}

int clampToInt(unsigned int v)
{
    return v > unsigned(INT_MAX) ? INT_MAX : int(v);
}

}  // namespace

CTavoScrollBar::CTavoScrollBar(QWidget* parent, int x, int y, int w, int h)
    : CTavoWidget(parent, 2, x, y, w, h)
    , m_orientation(0)
    , m_contentSize(100)
    , m_viewSize(10)
    , m_viewPos(0)
    , m_trackLength(0)
    , m_pressPos(0, 0)
    , m_dragLimits(QPoint(0, 0), QPoint(0, 0))
    , m_arrowsEnabled(false)
    , m_barRadius(0)
    , m_pressed(false)
    , m_allowDragging(false)
    , m_allowArrowScrolling(false)
    , m_repeatInterval(0)
    , m_barWidth(0)
    , m_barHeight(0)
    , m_autoHideTimer(nullptr)
    , m_repeatTimer(new QTimer(this))
    , m_control(ScrollTenthForward)
    , m_togglePos(0, 0)
    , m_autoHideMs(0)
    , m_hideAt(0)
{
    qRegisterMetaType<CTavoScrollBar::ScrollControlT>("CTavoScrollBar::ScrollControlT");
    qRegisterMetaType<QEvent::Type>("QEvent::Type");
    m_visible = false;
    m_repeatTimer->setSingleShot(true);
    // Halving down to 50 ms needs the intervals as given, not a coarse timer's.
    m_repeatTimer->setTimerType(Qt::PreciseTimer);
    connect(m_repeatTimer, &QTimer::timeout, this, &CTavoScrollBar::onAutoRepeatTimeout);
    m_clock.start();
}

CTavoScrollBar::~CTavoScrollBar() = default;

double CTavoScrollBar::ratio() const
{
    // Nothing to scroll where there is no content to compare with.
    if (m_contentSize <= 0 || m_viewSize < 0)
        return 1.0;
    return double(m_viewSize) / double(m_contentSize);
}

void CTavoScrollBar::set(int viewPos, int viewSize, int contentSize)
{
    if (viewPos == m_viewPos && viewSize == m_viewSize && contentSize == m_contentSize)
        return;
    m_viewPos = viewPos;
    if ((viewSize < 0 || contentSize < 0) && (viewSize != m_viewSize || contentSize != m_contentSize))
        guiLog(2, "CTavoScrollBar: negative size (view %d, content %d), nothing to scroll", viewSize, contentSize);
    m_viewSize = viewSize;
    m_contentSize = contentSize;
    if (viewSize == 0 || contentSize == 0)
        return;
    relayout();
    if (m_visible && m_parent && m_parent->isVisible())
        update();
}

void CTavoScrollBar::setSize(int viewSize, int contentSize)
{
    if (viewSize == m_viewSize && contentSize == m_contentSize)
        return;
    m_viewSize = viewSize;
    m_contentSize = contentSize;
    if (viewSize != 0 && contentSize != 0)
        relayout();
}

void CTavoScrollBar::setViewPos(int viewPos)
{
    m_viewPos = viewPos;
    relayout();
    if (m_visible)
        update();
}

void CTavoScrollBar::setArrowsEnabled(bool enabled)
{
    if (enabled == m_arrowsEnabled)
        return;
    m_arrowsEnabled = enabled;
    layout();
}

void CTavoScrollBar::forceVisible()
{
    CTavoWidget::setVisible(true);
    restartAutoHide();
}

void CTavoScrollBar::restartAutoHide()
{
    if (!m_autoHideTimer || m_autoHideMs <= 0)
        return;
    m_hideAt = m_clock.elapsed() + m_autoHideMs;
    if (!m_autoHideTimer->isActive())
        m_autoHideTimer->start(m_autoHideMs);
}

void CTavoScrollBar::setVisible(bool visible)
{
    // A bar with nothing to scroll is not shown this way.
    if (!(ratio() < 1.0))
        return;
    CTavoWidget::setVisible(visible);
    if (visible)
        restartAutoHide();
}

void CTavoScrollBar::layout()
{
    CTavoWidget::setVisible(true);
    m_trackLength = 0;
    const double r = ratio();

    CTavoWidget::layout();
    if (m_style) {
        m_barWidth = m_style->UInt(QStringLiteral("bar-width"), unsigned(qMax(0, width())));
        m_barHeight = m_style->UInt(QStringLiteral("bar-height"), unsigned(qMax(0, height())));
        m_barBrush = m_style->Brush(QStringLiteral("bar-background"), QBrush());
        m_barRadius = m_style->UInt(QStringLiteral("bar-border-radius"), 0);
        // Qt 4's default pen, width 0: no border unless the skin gives one.
        m_barPen = m_style->Pen(QStringLiteral("bar-border"), QPen(Qt::black, 0));
        m_pressedBrush = m_style->Brush(QStringLiteral("bar-pressed-background"), m_barBrush);
        m_allowDragging = m_style->UInt(QStringLiteral("allow-dragging"), 0) != 0;
        m_allowArrowScrolling = m_style->UInt(QStringLiteral("allow-arrow-scrolling"), 0) != 0;
        m_repeatInterval = clampToInt(m_style->UInt(QStringLiteral("auto-repeat-timeout"), 0));
        m_repeatTimer->setInterval(m_repeatInterval);
        const unsigned seconds = m_style->UInt(QStringLiteral("auto-hide-timeout"), 0);
        if (seconds > 0) {
            if (!m_autoHideTimer) {
                m_autoHideTimer = new QTimer(this);
                m_autoHideTimer->setSingleShot(true);
                connect(m_autoHideTimer, &QTimer::timeout, this, &CTavoScrollBar::onAutoHideTimeout);
            }
            m_autoHideMs = int(qMin<unsigned>(seconds, unsigned(INT_MAX / 1000)) * 1000);
            m_autoHideTimer->setInterval(m_autoHideMs);
        }
    }

    m_orientation = height() < width() ? 1 : 0;
    if (m_orientation == 0) {
        m_trackLength = m_contentRect.height();
        m_barRect.setRight(sum(m_barRect.left(), qint64(clampToInt(m_barWidth)) - 1));
        m_barRect.setBottom(sum(m_barRect.top(), qint64(toInt(m_trackLength * r)) - 1));
    } else {
        m_trackLength = qAbs(m_contentRect.width());
        m_barRect.setBottom(sum(m_barRect.top(), qint64(clampToInt(m_barHeight)) - 1));
        m_barRect.setRight(sum(m_barRect.left(), qint64(toInt(m_trackLength * r)) - 1));
    }
    if (r >= 1.0)
        CTavoWidget::setVisible(false);
}

void CTavoScrollBar::relayout()
{
    const double r = ratio();
    if (!(r < 1.0)) {
        CTavoWidget::setVisible(false);
        return;
    }
    CTavoWidget::setVisible(true);
    // r < 1 means the content size is positive.
    const double position = double(m_viewPos) / double(m_contentSize);
    const int length = qMax(kMinimumBarLength, toInt(r * m_trackLength));
    const int start = toInt(position * m_trackLength);
    if (m_orientation == 0) {
        m_barRect.moveLeft(sum(m_contentRect.left(), (qint64(m_contentRect.width()) - clampToInt(m_barWidth)) / 2));
        m_barRect.setTop(start);
        m_barRect.setBottom(sum(start, qint64(length) - 1));
    } else {
        m_barRect.moveTop(sum(m_contentRect.top(), (qint64(m_contentRect.height()) - clampToInt(m_barHeight)) / 2));
        m_barRect.setLeft(start);
        m_barRect.setRight(sum(start, qint64(length) - 1));
    }
    restartAutoHide();
    // The bar has come under the finger: no more repeats.
    if (m_pressed && m_repeatTimer->isActive() && m_barRect.contains(m_togglePos))
        m_repeatTimer->stop();
}

void CTavoScrollBar::paint(QPainter* painter)
{
    if (!painter || !m_visible)
        return;
    // Restored by hand: QPainter::save() allocates a state, and the bar is painted every frame.
    const qreal opacity = painter->opacity();
    const QPainter::RenderHints hints = painter->renderHints();
    const QPen pen = painter->pen();
    const QBrush brush = painter->brush();
    applyRenderQuality(painter);
    if (m_barWidth > 0 && m_barHeight > 0 && !qFuzzyCompare(m_opacity, 1.0f))
        painter->setOpacity(qAbs(m_opacity));
    if (!m_barRect.isNull()) {
        const int w = (m_barPen.style() != Qt::NoPen && m_barPen.width() > 0) ? m_barPen.width() : 0;
        const qreal radius = m_barRadius;
        if (w > 0) {
            painter->setPen(m_barPen);
            painter->setBrush(Qt::NoBrush);
            painter->drawRoundedRect(QRectF(m_barRect.x() + w / 2.0, m_barRect.y() + w / 2.0,
                                            m_barRect.width() - w, m_barRect.height() - w),
                                     radius, radius);
        }
        const QBrush& fill = m_pressed ? m_pressedBrush : m_barBrush;
        if (fill.style() != Qt::NoBrush) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(fill);
            painter->drawRoundedRect(QRectF(m_barRect.x() + w, m_barRect.y() + w, m_barRect.width() - 2 * w,
                                            m_barRect.height() - 2 * w),
                                     radius, radius);
        }
    }
    painter->setBrush(brush);
    painter->setPen(pen);
    painter->setRenderHints(QPainter::RenderHints(~0), false);
    painter->setRenderHints(hints, true);
    painter->setOpacity(opacity);
}

bool CTavoScrollBar::handleEvent(QEvent::Type type, QPoint point)
{
    if (m_visible && rect().contains(point)) {
        bool consumed;
        if (m_barRect.isValid() && !m_barRect.contains(point)) {
            m_pressed = false;
            consumed = false;
        } else if (type == QEvent::MouseButtonRelease) {
            m_pressed = false;
            consumed = true;
        } else if (type == QEvent::MouseMove) {
            consumed = handleMouseMoveEvent(point);
        } else if (type == QEvent::MouseButtonPress) {
            m_pressed = true;
            m_pressPos = point;
            consumed = true;
        } else {
            consumed = true;
        }
        update();
        return consumed;
    }
    const bool wasPressed = m_pressed;
    m_pressed = false;
    if (wasPressed)
        update();
    return false;
}

bool CTavoScrollBar::handleMouseMoveEvent(const QPoint& point)
{
    if (!m_pressed || !m_allowDragging || int(m_control) < 2)
        return false;
    if (m_orientation == 1) {
        const int x = qBound(m_dragLimits.left(), point.x(), qMax(m_dragLimits.left(), m_dragLimits.right()));
        m_barRect.moveCenter(QPoint(x, m_barRect.center().y()));
        if (m_dragLimits.width() <= 1)
            emit scrollContent(0);
        else
            emit scrollContent(qreal(m_barRect.center().x() - m_dragLimits.left()) / qreal(m_dragLimits.width()));
    } else {
        const int y = qBound(m_dragLimits.top(), point.y(), qMax(m_dragLimits.top(), m_dragLimits.bottom()));
        m_barRect.moveCenter(QPoint(m_barRect.center().x(), y));
        if (m_dragLimits.height() <= 1)
            emit scrollContent(0);
        else
            emit scrollContent(qreal(m_barRect.center().y() - m_dragLimits.top()) / qreal(m_dragLimits.height()));
    }
    return true;
}

bool CTavoScrollBar::handleItemToggleEvent(QEvent::Type type, QPoint point)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        m_togglePos = point;
        m_pressed = true;
        m_control = ScrollTenthBack;
        emit scrollControl(QEvent::KeyPress, ScrollTenthBack);
        // Each press repeats from the skin's pace again, then twice as fast each time.
        if (m_repeatInterval > 0)
            m_repeatTimer->start(m_repeatInterval);
        return true;
    case QEvent::MouseButtonRelease:
        emit scrollControl(QEvent::KeyRelease, ScrollTenthBack);
        m_togglePos = QPoint(0, 0);
        m_repeatTimer->stop();
        m_pressed = false;
        return true;
    case QEvent::MouseMove:
        handleMouseMoveEvent(point);
        return true;
    default:
        return false;
    }
}

void CTavoScrollBar::onAutoRepeatTimeout()
{
    if (!m_pressed)
        return;
    m_repeatTimer->start(qMax(kFastestRepeatMs, m_repeatTimer->interval() / 2));
    emit scrollControl(QEvent::KeyPress, m_control);
}

void CTavoScrollBar::onAutoHideTimeout()
{
    // Moved since the timer started: wait for the rest.
    const qint64 left = m_hideAt - m_clock.elapsed();
    if (left > 0) {
        m_autoHideTimer->start(int(qMin<qint64>(left, INT_MAX)));
        return;
    }
    if (m_pressed) {
        restartAutoHide();
        return;
    }
    if (m_arrowsEnabled && m_orientation == 0)
        return;
    Hide(true);
}

bool CTavoScrollBar::eventFilter(QObject* object, QEvent* event)
{
    Q_UNUSED(object);
    const QEvent::Type type = event->type();
    if (type != QEvent::MouseButtonPress && type != QEvent::MouseButtonRelease && type != QEvent::MouseMove)
        return false;
    const QPoint point = static_cast<QMouseEvent*>(event)->pos();
    handleEvent(type, point);
    if (!m_visible && rect().contains(point) && ratio() < 1.0)
        Show(true);
    return false;
}

void CTavoScrollBar::refreshDom()
{
    CTavoWidget::refreshDom();
    if (!tavoToolGetTestAutomationFlag())
        return;
    QDomElement element = m_dom.firstChildElement();
    if (element.isNull())
        return;
    element.setAttribute(QStringLiteral("SCROLL_BAR_POSITION"),
                         QStringLiteral("%1:%2").arg(m_barRect.left()).arg(m_barRect.top()));
    if (m_orientation == 1)
        element.setAttribute(QStringLiteral("SCROLL_DIRECTION"), QStringLiteral("HORIZONTAL"));
}
