#include "widgets/CTavoPageView.h"

#include <QTimer>
#include <QtMath>
#include <climits>

#include "log/GuiLog.h"
#include "style/CTavoWidgetStyle.h"

namespace {

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

int saturate(qint64 v)
{
    return int(qBound<qint64>(INT_MIN, v, INT_MAX));
}

int clampToInt(unsigned int v)
{
    return v > unsigned(INT_MAX) ? INT_MAX : int(v);
}

}  // namespace

CTavoPageView::CTavoPageView(QWidget* parent, int x, int y, int w, int h)
    : CTavoView(parent, x, y, w, h)
    , m_currentPage(0)
    , m_pageCount(0)
    , m_columns(-1)
    , m_rows(-1)
    , m_programmaticScroll(false)
    , m_verticalGap(0)
    , m_initialScrollVelocity(0)
    , m_interPageGap(0)
    , m_maxPages(0)
    , m_betweenPageGap(0)
    , m_enableAutoScroll(true)
    , m_autoScaleWidgets(false)
    , m_alignHCenter(false)
{
    connect(this, &CTavoView::scrollOffsetChanged, this, &CTavoPageView::onScrollOffsetChanged);
    connect(this, &CTavoView::scrollingStopped, this, &CTavoPageView::onScrollingStopped);
}

CTavoPageView::~CTavoPageView() = default;

int CTavoPageView::pageOffset(int page) const
{
    return toInt(double(page) * m_contentRect.width() * double(m_scaleX));
}

void CTavoPageView::layout()
{
    CTavoView::layout();
    if (m_style) {
        CTavoWidgetStyle* s = m_style;
        const QSize pages = s->Size(QStringLiteral("page-layout"), QSize(-1, -1));
        m_columns = pages.width();
        m_rows = pages.height();
        m_verticalGap = clampToInt(s->UInt(QStringLiteral("vertical-gap"), 0));
        m_initialScrollVelocity = clampToInt(s->UInt(QStringLiteral("initial-scroll-velocity"), 0));
        m_interPageGap = clampToInt(s->UInt(QStringLiteral("inter-page-gap"), 0));
        m_maxPages = clampToInt(s->UInt(QStringLiteral("max-pages"), 0));
        m_betweenPageGap = s->Int(QStringLiteral("between-page-gap"), 0);
        m_enableAutoScroll = s->Bool(QStringLiteral("enable-auto-scroll"), true);
        m_autoScaleWidgets = s->Bool(QStringLiteral("auto-scale-formatted-widgets"), false);
        m_alignHCenter = s->Bool(QStringLiteral("align-hcenter"), false);
    }
    m_animated = m_enableAutoScroll;
    // A page is the viewport and the gap after it.
    m_contentRect.setRight(saturate(qint64(m_contentRect.right()) + m_betweenPageGap));
}

void CTavoPageView::format(Qt::Orientation orientation, int focusIndex)
{
    const QRect viewport = m_contentRect;
    m_contentSize = QSize(-1, -1);
    m_orientation = orientation;
    setOffsetScale(orientation == Qt::Horizontal ? m_scaleX : m_scaleY);
    m_stacked = false;
    m_pageCount = 1;
    qint64 x = viewport.left();
    const int visible = getNumOfVisibleItems();

    if (m_autoScaleWidgets && orientation == Qt::Horizontal && !m_items.isEmpty()) {
        m_columns = m_items.size();
        const int width = this->width() / m_items.size();
        for (CTavoObject* item : qAsConst(m_items)) {
            if (CTavoWidget* widget = qobject_cast<CTavoWidget*>(item))
                widget->setSize(QSize(width, widget->height()));
        }
    }
    const int columns = effectiveColumns();
    const int rows = effectiveRows();

    // Centred: the margin that puts a row of the visible items in the middle.
    qint64 margin = 0;
    if (m_alignHCenter) {
        const CTavoObject* first = m_items.isEmpty() ? nullptr : m_items.first();
        if (first) {
            const qint64 perRow = qMin(visible, columns);
            const qint64 rowWidth = perRow * first->width() + qMax<qint64>(0, perRow - 1) * m_itemGap;
            margin = (viewport.width() - rowWidth) / 2 - m_interPageGap;
        }
    }

    int i = 0;
    for (int index = 0; index < m_items.size(); ++index) {
        CTavoObject* item = m_items[index];
        if (!item || !item->isVisible())
            continue;
        const int row = i / columns;
        const int column = i % columns;
        item->move(saturate(x + margin + m_interPageGap + (qint64(item->width()) + m_itemGap) * column),
                   saturate(viewport.top() + (qint64(item->height()) + m_verticalGap) * row));
        ++i;
        if (row + 1 == rows && column + 1 == columns && index != m_items.size() - 1) {
            x += viewport.width();
            ++m_pageCount;
            i = 0;
        }
        m_contentSize.setHeight(qMax(m_contentSize.height(), saturate(qint64(item->height()) * columns)));
    }

    if (m_maxPages >= 1 && m_maxPages < m_pageCount)
        m_pageCount = m_maxPages;

    // A focus beyond the last page allowed starts on the last one.
    m_currentPage = qMin(qMax(focusIndex, 0) / qMax(1, rows * columns), m_pageCount - 1);
    emit pageChanged(m_currentPage, m_pageCount);
    // Focused without a scroll of its own: the page shown below is the focus's.
    if (focusIndex >= 0)
        setFocusedItem(focusIndex, true, Qt::OtherFocusReason);

    m_contentSize.setWidth(saturate(qint64(viewport.width()) * m_pageCount));
    const QPoint offset(pageOffset(m_currentPage), 0);
    setScrollOffset(offset);
    // Not scrollable until the range below is set: the page is shown all the same.
    if (scrollOffset() != offset)
        m_viewRect.moveTo(offset);
    resetOffset(offset);

    const QRect grid = m_maxPages > 0 ? viewport : m_viewRect;
    setSnapGridSize(QSize(toInt(grid.width() * double(m_scaleX)), toInt(grid.height() * double(m_scaleY))));
    setScroller();

    if (isBeingScrolled())
        onScrollingStopped();
    else
        updateScrollControlVisibility();
    update();
}

void CTavoPageView::onScrollOffsetChanged(const QPoint& offset)
{
    if (!rect().isValid())
        return;
    if (isBeingScrolled() && m_scrollBar)
        m_scrollBar->Hide(false);
    const bool touched = !isBeingAutoScrolled() && !isSteadyScroll();
    if ((touched || m_programmaticScroll) && qAbs(momentumFactor()) <= 1e-12 && m_contentRect.width() > 0) {
        const int page = qMin(qRound(double(offset.x()) / m_contentRect.width()), m_pageCount - 1);
        if (page != m_currentPage) {
            m_currentPage = page;
            emit pageChanged(m_currentPage, m_pageCount);
        }
    }
}

void CTavoPageView::onScrollingStopped()
{
    if (!rect().isValid())
        return;
    const double pageWidth = double(m_scaleX) * m_contentRect.width();
    const QPoint offset = scrollOffset();
    int page = pageWidth > 0.0 ? qRound(double(offset.x()) / pageWidth) : 0;
    page = qMin(page, m_pageCount - 1);
    const QPoint max = maxOffset();
    const QPoint target(qBound(0, toInt(double(m_scaleX) * page * m_contentRect.width()), qMax(0, max.x())),
                        qBound(0, offset.y(), qMax(0, max.y())));
    if (target.x() != offset.x()) {
        if (!m_programmaticScroll)
            setTargetOffset(target, m_enableAutoScroll, 0.0f, true);
    } else {
        // At rest on a page: that page is shown.
        if (page >= 0)
            m_currentPage = page;
        emit pageChanged(m_currentPage, m_pageCount);
    }
    m_programmaticScroll = false;
    if (CTavoWidget* pressed = m_pressedItem.data()) {
        m_holdTimer->stop();
        pressed->setDown(false);
        m_pressedItem = nullptr;
    }
    updateScrollControlVisibility();
}

void CTavoPageView::scrollToPage(int page, bool animated)
{
    if (page >= 0 && page < m_pageCount) {
        m_programmaticScroll = true;
        if (page != m_currentPage) {
            m_currentPage = page;
            emit pageChanged(m_currentPage, m_pageCount);
        }
        setTargetOffset(QPoint(pageOffset(page), scrollOffset().y()), animated, float(m_initialScrollVelocity),
                        true);
        if (m_scrollBar)
            m_scrollBar->Hide(false);
        if (isBeingScrolled())
            onScrollingStopped();
        else
            m_programmaticScroll = false;  // a jump is over as soon as it is made
    }
    // The bar hidden for the move comes back for a view of several pages, also after a jump.
    updateScrollControlVisibility();
}

void CTavoPageView::scrollToNextPage(int delta, bool animated)
{
    scrollToPage(saturate(qint64(m_currentPage) + delta), animated);
}

void CTavoPageView::updateScrollControlVisibility()
{
    if (m_pageCount >= 2 && m_scrollBar && m_scrollBar->rect().isValid()) {
        m_scrollBar->Show(true);
        m_scrollBar->update();
    }
}

void CTavoPageView::onScrollControlled(QEvent::Type type, CTavoScrollBar::ScrollControlT control)
{
    // As the key table gives it: control 1 turns back on its press and again on its release.
    const bool forwardOrBack = control == CTavoScrollBar::ScrollTenthForward || control == CTavoScrollBar::ScrollTenthBack;
    if ((type == QEvent::KeyRelease && forwardOrBack) || control == CTavoScrollBar::ScrollTenthBack)
        scrollToNextPage(control ? -1 : 1, true);
}

void CTavoPageView::ensureVisible(const CTavoObject* item, bool animate, const QRect& margins, bool clip)
{
    Q_UNUSED(animate);
    Q_UNUSED(margins);
    Q_UNUSED(clip);
    if (!item || indexOf(item) < 0 || !isScrollable())
        return;
    if (visibleRect().contains(item->rect()))
        return;
    const int width = m_contentRect.width();
    if (width <= 0)
        return;
    int page = int(qFloor(double(qint64(item->left()) - m_contentRect.left()) / width));
    page = qMin(page, m_pageCount - 1);
    setTargetOffset(QPoint(pageOffset(page), scrollOffset().y()), m_enableAutoScroll, 0.0f, true);
}

int CTavoPageView::determineNextItemDelta(int key) const
{
    const int columns = effectiveColumns();
    const int rows = effectiveRows();
    if (m_orientation == Qt::Vertical) {
        switch (key) {
        case Qt::Key_Up:
            return -1;
        case Qt::Key_Down:
            return 1;
        case Qt::Key_Left:
            return -columns;
        case Qt::Key_Right:
            return columns;
        default:
            return 0;
        }
    }
    switch (key) {
    case Qt::Key_Right:
        return 1;
    case Qt::Key_Left:
        return -1;
    case Qt::Key_Up:
        // Not past the first item: only as far as it.
        return (m_focusedItem > 0 && m_focusedItem < rows) ? -m_focusedItem : -rows;
    case Qt::Key_Down: {
        const int last = m_items.size() - 1;
        if (m_focusedItem + rows > last && m_focusedItem != last)
            return last - m_focusedItem;
        return rows;
    }
    default:
        return 0;
    }
}
