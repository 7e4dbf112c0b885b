#include "widgets/CTavoView.h"

#include <QDomElement>
#include <QHash>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <climits>
#include <cmath>

#include "automation/CTavoUITA.h"
#include "layout/CTavoLayoutWidget.h"
#include "log/GuiLog.h"
#include "tools/TavoToolFlags.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoButtonDefs.h"
#include "widgets/KineticScrollPrivate.h"

namespace {

const int kHoldTimeoutMs = 1000;

// Which view holds each widget item, and at how many places: surfaces leave
// these out of their pass. Bare placeholders are never painted by a surface
// and are not listed.
struct HolderT
{
    CTavoView* view;
    int places;
};

QHash<const QObject*, HolderT>& holders()
{
    static QHash<const QObject*, HolderT> map;
    return map;
}

int saturate(qint64 v)
{
    return int(qBound<qint64>(INT_MIN, v, INT_MAX));
}

// double to int by truncation, saturating; NaN becomes 0.
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

int roundInt(double v)
{
    if (!(v == v))
        return 0;
    if (v >= double(INT_MAX) - 1.0)
        return INT_MAX;
    if (v <= double(INT_MIN) + 1.0)
        return INT_MIN;
    return qRound(v);
}

int clampToInt(unsigned int v)
{
    return v > unsigned(INT_MAX) ? INT_MAX : int(v);
}

// A content length over a scale factor; a view without a usable scale maps 1:1.
int unscale(int v, float scale)
{
    if (!(scale > 0.0f) || !std::isfinite(scale))
        return v;
    return roundInt(double(v) / double(scale));
}

bool fuzzyEqual(double a, double b)
{
    return qAbs(a - b) <= 1e-12 * qMin(qAbs(a), qAbs(b));
}

// The painter state a view's paint changes, kept and put back by hand:
// QPainter::save() allocates a state, and a list is painted every frame.
struct PainterState
{
    QPainter* p;
    QTransform world;
    bool viewTransform;
    QRect window;
    QRect viewport;
    qreal opacity;
    QPainter::RenderHints hints;
    QPen pen;
    QBrush brush;
    QFont font;

    explicit PainterState(QPainter* painter)
        : p(painter)
        , world(painter->worldTransform())
        , viewTransform(painter->viewTransformEnabled())
        , window(painter->window())
        , viewport(painter->viewport())
        , opacity(painter->opacity())
        , hints(painter->renderHints())
        , pen(painter->pen())
        , brush(painter->brush())
        , font(painter->font())
    {
    }
    void restore()
    {
        p->setWindow(window);
        p->setViewport(viewport);
        p->setViewTransformEnabled(viewTransform);
        p->setWorldTransform(world);
        p->setOpacity(opacity);
        p->setRenderHints(QPainter::RenderHints(~0), false);
        p->setRenderHints(hints, true);
        p->setPen(pen);
        p->setBrush(brush);
        if (!(p->font() == font))
            p->setFont(font);
    }
};

}  // namespace

CTavoView::CTavoView(QWidget* parent, int x, int y, int w, int h)
    : CTavoWidget(parent, 2, x, y, w, h)
    , KineticScroll()
    , m_contentSize(-1, -1)
    , m_orientation(Qt::Vertical)
    , m_scaleX(1.0f)
    , m_scaleY(1.0f)
    , m_holdTimer(new QTimer(this))
    , m_itemGap(0)
    , m_bottomSpace(0)
    , m_contentExtra(0)
    , m_ignoreKeys(false)
    , m_navFocusesItem(false)
    , m_navSelectsItem(false)
    , m_focusedItem(-1)
    , m_autoscrollTimeout(30)
    , m_scaleRatio(1.0)
    , m_paneStart(0, 0)
    , m_paneDragging(false)
    , m_paneArmed(false)
    , m_paneDragThreshold(65535)
    , m_walkPastEnds(true)
    , m_scrollBar(nullptr)
    , m_smoothScroll(true)
    , m_pageNavigation(false)
    , m_ignoreSelectKey(false)
    , m_clip(true)
    , m_dimWhenDisabled(false)
    , m_paintHint(0)
    , m_wrappedItems(0)
    , m_stacked(false)
{
    qRegisterMetaType<CTavoObject*>("CTavoObject*");
    qRegisterMetaType<Qt::FocusReason>("Qt::FocusReason");
    m_holdTimer->setSingleShot(true);
    m_holdTimer->setInterval(kHoldTimeoutMs);
    connect(m_holdTimer, &QTimer::timeout, this, &CTavoView::onHoldTimeout);

    // The bar is styled by the host's sheet but belongs to the view: the view
    // paints it and reports it among its children.
    m_scrollBar = new CTavoScrollBar(parent);
    m_scrollBar->setObjectName(QStringLiteral("view-scrollbar"));
    m_scrollBar->setParent(this);
    addSubWidget(m_scrollBar);
    connect(m_scrollBar, &CTavoScrollBar::scrollContent, this, &CTavoView::onScrollContent);
    connect(m_scrollBar, &CTavoScrollBar::scrollControl, this, &CTavoView::onScrollControlled);

    // The last filter installed sees events first: the bar, which never consumes.
    if (parent) {
        parent->installEventFilter(this);
        parent->installEventFilter(m_scrollBar);
    }
}

CTavoView::~CTavoView()
{
    releaseAll();
    auto& map = holders();
    for (auto it = map.begin(); it != map.end();) {
        if (it.value().view == this)
            it = map.erase(it);
        else
            ++it;
    }
}

CTavoView* CTavoView::holderOf(const QObject* object, bool ancestors)
{
    const QHash<const QObject*, HolderT>& map = holders();
    if (map.isEmpty())
        return nullptr;
    for (const QObject* o = object; o; o = ancestors ? o->parent() : nullptr) {
        const auto it = map.constFind(o);
        if (it != map.constEnd() && it.value().places > 0)
            return it.value().view;
    }
    return nullptr;
}

// --- the item list -------------------------------------------------------------

// A widget's record stays, with no places, while the widget lives after it was
// taken out: rows that come and go (a list recycling its row widgets) then cost
// no allocation and no new connection each time.
void CTavoView::hold(CTavoObject* item)
{
    if (!item || !qobject_cast<CTavoWidget*>(item))
        return;
    HolderT& holder = holders()[item];
    if (holder.view != this) {
        holder.view = this;
        holder.places = 0;
    }
    connect(item, &QObject::destroyed, this, &CTavoView::onItemDestroyed, Qt::UniqueConnection);
    ++holder.places;
    if (static_cast<CTavoWidget*>(item)->wrappedQWidget())
        ++m_wrappedItems;
}

void CTavoView::release(CTavoObject* item)
{
    if (!item)
        return;
    auto& map = holders();
    const auto it = map.find(item);
    if (it != map.end() && it.value().view == this && it.value().places > 0)
        --it.value().places;
}

void CTavoView::releaseAll()
{
    const QVector<CTavoObject*> old = m_items;
    m_items.clear();
    for (CTavoObject* item : old)
        release(item);
    m_wrappedItems = 0;
    m_stacked = false;
    m_paintHint = 0;
}

void CTavoView::onItemDestroyed(QObject* object)
{
    auto& map = holders();
    const auto it = map.find(object);
    if (it == map.end() || it.value().view != this)
        return;
    const bool held = it.value().places > 0;
    map.erase(it);
    if (!held)
        return;
    // An owner deleted an item without taking it out: the entry becomes null,
    // which every walk skips.
    for (int i = 0; i < m_items.size(); ++i) {
        if (static_cast<QObject*>(m_items[i]) == object)
            m_items[i] = nullptr;
    }
    if (m_pressedItem.isNull())
        m_holdTimer->stop();
}

void CTavoView::append(CTavoObject* item)
{
    insert(m_items.size(), item);
}

void CTavoView::insert(int index, CTavoObject* item)
{
    if (index < 0 || index > m_items.size()) {
        guiLog(3, "CTavoView::insert: index %d out of range 0..%d, appended", index, m_items.size());
        index = m_items.size();
    }
    m_items.insert(index, item);
    m_stacked = false;
    hold(item);
    CTavoWidget* widget = qobject_cast<CTavoWidget*>(item);
    if (widget && widget->parent()) {
        if (QWidget* wrapped = widget->wrappedQWidget())
            wrapped->installEventFilter(this);
    }
}

void CTavoView::replace(int index, CTavoObject* item)
{
    if (index < 0 || index >= m_items.size()) {
        guiLog(3, "CTavoView::replace: index %d out of range 0..%d", index, m_items.size() - 1);
        return;
    }
    CTavoObject* old = m_items[index];
    m_items[index] = item;
    if (old != item) {
        CTavoWidget* oldWidget = qobject_cast<CTavoWidget*>(old);
        if (oldWidget && oldWidget->wrappedQWidget())
            m_wrappedItems = qMax(0, m_wrappedItems - 1);
        release(old);
        hold(item);
    }
}

CTavoObject* CTavoView::takeAt(int index)
{
    if (index < 0 || index >= m_items.size())
        return nullptr;
    CTavoObject* item = m_items.takeAt(index);
    m_stacked = false;
    CTavoWidget* widget = qobject_cast<CTavoWidget*>(item);
    if (widget && widget->wrappedQWidget())
        m_wrappedItems = qMax(0, m_wrappedItems - 1);
    release(item);
    if (item && m_pressedItem.data() == item) {
        m_pressedItem = nullptr;
        m_holdTimer->stop();
    }
    if (index == m_focusedItem)
        m_focusedItem = index - 1;
    return item;
}

void CTavoView::takeAll()
{
    releaseAll();
    m_pressedItem = nullptr;
    m_focusedItem = -1;
    m_holdTimer->stop();
}

void CTavoView::clear()
{
    for (CTavoObject* item : qAsConst(m_items)) {
        if (item)
            item->deleteLater();
    }
    releaseAll();
    m_pressedItem = nullptr;
    m_focusedItem = -1;
}

void CTavoView::hideFrom(int index)
{
    for (int i = qMax(0, index); i < m_items.size(); ++i) {
        if (m_items[i])
            m_items[i]->setVisible(false);
    }
}

CTavoObject* CTavoView::itemAt(int index) const
{
    return (index >= 0 && index < m_items.size()) ? m_items[index] : nullptr;
}

int CTavoView::indexOf(const CTavoObject* item) const
{
    for (int i = 0; i < m_items.size(); ++i) {
        if (m_items[i] == item)
            return i;
    }
    return -1;
}

CTavoObject* CTavoView::focussedItem() const
{
    return itemAt(m_focusedItem);
}

int CTavoView::getNumOfVisibleItems() const
{
    int n = 0;
    for (CTavoObject* item : m_items)
        n += (item && item->isVisible()) ? 1 : 0;
    return n;
}

bool CTavoView::areAnyItemsVisible() const
{
    for (CTavoObject* item : m_items) {
        if (item && item->isVisible())
            return true;
    }
    return false;
}

// --- geometry ------------------------------------------------------------------

bool CTavoView::isScrollable() const
{
    if (!m_scrollBar || m_scrollBar->contentSize() <= 0)
        return false;
    return float(m_scrollBar->viewSize()) / float(m_scrollBar->contentSize()) < 1.0f;
}

void CTavoView::layout()
{
    CTavoWidget::layout();
    if (m_scrollBar)
        m_scrollBar->layout();
    m_viewRect.setSize(m_contentRect.size());

    QWidget* host = m_parent;
    if (!host || host->width() <= 0 || host->height() <= 0)
        return;
    if (!m_style) {
        setSize(host->size());
        m_viewRect.setSize(m_contentRect.size());
    } else {
        CTavoWidgetStyle* s = m_style;
        m_itemGap = clampToInt(s->UInt(QStringLiteral("item-gap"), 0));
        m_bottomSpace = clampToInt(s->UInt(QStringLiteral("bottom-space"), 0));
        m_dragRect = QRect(s->Location(QStringLiteral("drag-rect-location"), QPoint(0, 0)),
                           s->Size(QStringLiteral("drag-rect-size"), QSize()));
        m_navFocusesItem = s->Bool(QStringLiteral("navigation-cluster-focuses-item"), false);
        m_navSelectsItem = s->Bool(QStringLiteral("navigation-cluster-selects-item"), false);
        setThreshold(clampToInt(s->UInt(QStringLiteral("dragging-threshold"), 10)));
        m_autoscrollTimeout = clampToInt(s->UInt(QStringLiteral("autoscroll-timeout"), 30));
        m_paneDragThreshold = clampToInt(s->UInt(QStringLiteral("pane-drag-threshold"), 65535));
        setMomentumFactor(s->UInt(QStringLiteral("dragging-momentum"), 100) / 100.0);
        m_smoothScroll = s->Bool(QStringLiteral("smooth-scroll-enabled"), true);
        m_pageNavigation = s->Bool(QStringLiteral("page-navigation-enabled"), false);
        m_ignoreSelectKey = s->Bool(QStringLiteral("ignore-select-key"), false);
        m_clip = s->Bool(QStringLiteral("clip"), true);
        m_dimWhenDisabled = s->Bool(QStringLiteral("dim-when-disabled"), false);
        setMaxSpeed(clampToInt(s->UInt(QStringLiteral("max-speed"), 32)));
        setEaseOutLength(clampToInt(s->UInt(QStringLiteral("ease-out-length"), 100)));
        setEaseOutRate(s->UInt(QStringLiteral("ease-out-rate"), 20) / 100.0);
        setScrollSpringLength(clampToInt(s->UInt(QStringLiteral("scroll-spring-length"), 100)));
    }
    // Offsets are in host pixels: the painter's window maps the viewport onto
    // the host, and these factors undo that scaling for the items.
    m_scaleX = float(m_viewRect.width()) / float(host->width());
    m_scaleY = float(m_viewRect.height()) / float(host->height());
    if (!(m_scaleX > 0.0f))
        m_scaleX = 1.0f;
    if (!(m_scaleY > 0.0f))
        m_scaleY = 1.0f;
    setScale(1.0);
    setOffsetScale(m_orientation == Qt::Horizontal ? m_scaleX : m_scaleY);
}

void CTavoView::format(Qt::Orientation orientation, const QSize& size, int focusIndex, bool resetOffset)
{
    const QRect viewport = m_contentRect;
    const qint64 start = orientation == Qt::Horizontal ? viewport.left() : viewport.top();
    m_orientation = orientation;
    // A finger moves the content by the scale of the axis it scrolls.
    setOffsetScale(orientation == Qt::Horizontal ? m_scaleX : m_scaleY);
    m_contentSize = size;
    m_stacked = false;
    if (!(size.width() > 0 && size.height() > 0)) {
        qint64 pos = start;
        for (CTavoObject* item : qAsConst(m_items)) {
            if (!item || !item->isVisible())
                continue;
            if (orientation == Qt::Horizontal) {
                item->move(saturate(pos), viewport.top());
                pos = qBound<qint64>(INT_MIN, pos + item->width() + m_itemGap, INT_MAX);
                m_contentSize.setWidth(saturate(pos - start));
                m_contentSize.setHeight(qMax(m_contentSize.height(), item->height()));
            } else {
                item->move(viewport.left(), saturate(pos));
                pos = qBound<qint64>(INT_MIN, pos + item->height() + m_itemGap, INT_MAX);
                m_contentSize.setHeight(saturate(pos - start));
                m_contentSize.setWidth(qMax(m_contentSize.width(), item->width()));
            }
        }
        m_stacked = true;
        m_paintHint = 0;
    }
    setFocusedItem(focusIndex, true, Qt::OtherFocusReason);
    if (resetOffset) {
        m_viewRect.moveTo(0, 0);
        KineticScroll::reset();
    }
    setScroller();
    if (m_visible && m_parent && m_parent->isVisible())
        update();
}

void CTavoView::setContentSize(const QSize& size)
{
    m_contentSize = size;
    setScroller();
}

void CTavoView::setScroller()
{
    const QRect viewport = m_contentRect;
    const qint64 contentHeight = qint64(m_contentSize.height()) + m_bottomSpace + m_contentExtra;
    if (m_scrollBar) {
        if (m_orientation == Qt::Horizontal) {
            m_scrollBar->set(0, toInt(viewport.width() * double(m_scaleX)),
                             toInt(double(m_scaleX) * m_contentSize.width()));
            if (scrollSpringLength() != 0)
                setScrollSpringLength(m_viewRect.width() / 2);
        } else {
            m_scrollBar->set(scrollOffset().y(), toInt(viewport.height() * double(m_scaleY)),
                             toInt(double(m_scaleY) * double(contentHeight)));
            if (scrollSpringLength() != 0)
                setScrollSpringLength(m_viewRect.height() / 2);
        }
        m_scrollBar->setVisible(isScrollable());
    }
    // A content shorter than the view gives no y range: the difference taken
    // unsigned would be immense, so the limit saturates.
    const qint64 dy = contentHeight - m_viewRect.height();
    const int maxY = dy < 0 ? INT_MAX : toInt(double(dy) * m_scaleY);
    const int maxX = toInt((double(m_contentSize.width()) - m_viewRect.width()) * m_scaleX);
    setMaxOffset(QPoint(maxX, maxY));
    resetOffset(scrollOffset());
}

void CTavoView::setScale(double scale)
{
    if (fuzzyEqual(scale, m_scaleRatio))
        return;
    if (!(scale > 0.0) || !std::isfinite(scale)) {
        guiLog(3, "CTavoView::setScale: ignoring scale %f", scale);
        return;
    }
    m_scaleRatio = scale;
    m_scaleX = float(m_scaleX * scale);
    m_scaleY = float(m_scaleY * scale);
    update();
}

QPoint CTavoView::mapPointInView(const QPoint& p) const
{
    return QPoint(saturate(qint64(p.x()) + unscale(m_viewRect.left(), m_scaleX)),
                  saturate(qint64(p.y()) + unscale(m_viewRect.top(), m_scaleY)));
}

QPoint CTavoView::mapToPointInParent(const QPoint& p) const
{
    return QPoint(saturate(qint64(p.x()) - unscale(m_viewRect.left(), m_scaleX)),
                  saturate(qint64(p.y()) - unscale(m_viewRect.top(), m_scaleY)));
}

QPoint CTavoView::mapToPointInParentScaled(const QPoint& p) const
{
    return QPoint(saturate(qint64(toInt(double(m_scaleX) * p.x())) - unscale(m_viewRect.left(), m_scaleX)),
                  saturate(qint64(toInt(double(m_scaleY) * p.y())) - unscale(m_viewRect.top(), m_scaleY)));
}

QRect CTavoView::visibleRect() const
{
    return QRect(mapPointInView(m_contentRect.topLeft()), m_viewRect.size());
}

// --- painting ------------------------------------------------------------------

void CTavoView::setupPainter(QPainter* painter)
{
    setupPainter(painter, m_clip);
}

void CTavoView::setupPainter(QPainter* painter, bool clip)
{
    if (!painter)
        return;
    painter->setViewTransformEnabled(true);
    if (clip)
        painter->setClipRect(m_contentRect, Qt::IntersectClip);
    painter->setWindow(m_viewRect);
    painter->scale(m_scaleX, m_scaleY);
    if (!fuzzyEqual(m_scaleRatio, 1.0)) {
        const float ratio = float(m_scaleRatio);
        const float k = ratio < 1.0f ? 1.0f / ratio : 1.0f / (1.0f - ratio);
        painter->translate(float(m_viewRect.width()) * (1.0f - ratio) / k,
                           float(m_viewRect.height()) * (1.0f - ratio) / k);
    }
}

void CTavoView::paint(QPainter* painter)
{
    if (!painter)
        return;
    QRect dirty = rect();
    if (painter->hasClipping())
        dirty &= painter->clipBoundingRect().toAlignedRect();
    paint(painter, dirty);
}

void CTavoView::paint(QPainter* painter, const QRect& dirty)
{
    if (!painter || !m_visible)
        return;
    if (!m_items.isEmpty() && dirty.intersects(m_contentRect)) {
        // Clipping to the viewport costs Qt a clip record; a surface that
        // repaints only the view already clips there.
        bool clip = m_clip;
        if (clip && painter->hasClipping() && m_contentRect.contains(painter->clipBoundingRect().toAlignedRect()))
            clip = false;
        PainterState state(painter);
        if (clip)
            painter->save();
        setupPainter(painter, clip);
        if (!m_enabled && m_dimWhenDisabled)
            painter->setOpacity(0.5);
        paintItems(painter, visibleRect());
        if (clip)
            painter->restore();
        state.restore();
    }
    if (m_scrollBar && areAnyItemsVisible())
        m_scrollBar->paint(painter);
    restartAutoScroll(m_autoscrollTimeout);
}

void CTavoView::SetScrolling(QPainter* painter)
{
    if (m_scrollBar && areAnyItemsVisible())
        m_scrollBar->paint(painter);
    restartAutoScroll(m_autoscrollTimeout);
}

int CTavoView::firstPaintIndex(const QRect& visible)
{
    const int n = m_items.size();
    const bool horizontal = m_orientation == Qt::Horizontal;
    const int start = horizontal ? visible.left() : visible.top();
    auto before = [horizontal, start](const CTavoObject* item) {
        return (horizontal ? item->right() : item->bottom()) < start;
    };
    int i = qBound(0, m_paintHint, qMax(0, n - 1));
    while (i > 0) {
        const CTavoObject* prev = m_items[i - 1];
        if (prev && prev->isVisible() && before(prev))
            break;
        --i;
    }
    while (i < n) {
        const CTavoObject* item = m_items[i];
        if (item && item->isVisible() && !before(item))
            break;
        ++i;
    }
    m_paintHint = i;
    return i;
}

void CTavoView::paintItems(QPainter* painter, const QRect& visible)
{
    const bool windowed = m_stacked && m_clip && m_wrappedItems == 0;
    const bool horizontal = m_orientation == Qt::Horizontal;
    const int end = horizontal ? visible.right() : visible.bottom();
    // The list may change under us: a row built on request replaces its placeholder.
    for (int i = windowed ? firstPaintIndex(visible) : 0; i < m_items.size(); ++i) {
        CTavoObject* item = m_items.at(i);
        if (!item || !item->isVisible())
            continue;
        if (m_clip && !item->intersects(visible)) {
            if (windowed) {
                if ((horizontal ? item->left() : item->top()) > end)
                    break;
                continue;
            }
            // A real widget inside an item must move with the list even out of view.
            CTavoWidget* widget = qobject_cast<CTavoWidget*>(item);
            if (widget && widget->wrappedQWidget()) {
                if (widget->isInitialized())
                    paintWidget(painter, widget);
                else
                    emit requestInitialization(item);
            }
            continue;
        }
        if (!item->isInitialized()) {
            emit requestInitialization(item);
            continue;
        }
        if (CTavoWidget* widget = qobject_cast<CTavoWidget*>(item))
            paintWidget(painter, widget);
    }
}

namespace {
// What the surface's pass would paint below an object: its painted
// descendants in findChildren order.
void paintDescendants(QPainter* painter, const QObject* node)
{
    const QObjectList& children = node->children();
    for (int i = 0; i < children.size(); ++i) {
        QObject* child = children.at(i);
        if (CTavoWidget* widget = qobject_cast<CTavoWidget*>(child)) {
            if (widget->isVisible())
                widget->paint(painter);
        }
        if (!child->children().isEmpty())
            paintDescendants(painter, child);
    }
}

// A class that paints its painted children in its own paint() says so with
// Q_CLASSINFO("TavoPaintsChildren", "yes"): the view then leaves them alone.
bool paintsOwnChildren(const CTavoWidget* widget)
{
    return widget->metaObject()->indexOfClassInfo("TavoPaintsChildren") >= 0;
}
}  // namespace

void CTavoView::paintWidget(QPainter* painter, CTavoWidget* widget)
{
    widget->paint(painter);
    if (!widget->children().isEmpty() && !paintsOwnChildren(widget))
        paintDescendants(painter, widget);
}

// --- scrolling -----------------------------------------------------------------

QPoint CTavoView::scrollOffset() const
{
    return m_viewRect.topLeft();
}

void CTavoView::setScrollOffset(const QPoint& p)
{
    if (!isScrollable())
        return;
    int position;
    if (m_orientation == Qt::Vertical) {
        if (p.y() == m_viewRect.top() && !isBeingScrolled())
            return;
        m_viewRect.moveTo(0, p.y());
        position = p.y();
    } else if (m_orientation == Qt::Horizontal) {
        if (p.x() == m_viewRect.left() && !isBeingScrolled())
            return;
        m_viewRect.moveTo(p.x(), 0);
        position = p.x();
    } else {
        return;
    }
    m_scrollBar->setViewPos(position);
    m_scrollBar->Show(true);
    update();
    emit scrollOffsetChanged(p);
}

void CTavoView::resetScrollOffset()
{
    m_viewRect.moveTo(0, 0);
    if (m_scrollBar) {
        m_scrollBar->setViewPos(0);
        m_scrollBar->Show(false);
    }
    update();
    KineticScroll::reset();
    emit scrollOffsetChanged(QPoint(0, 0));
}

void CTavoView::setScrollOffsetAndState(const QPoint& p)
{
    setScrollOffset(p);
    resetOffset(p);
}

void CTavoView::showScrollBar()
{
    if (m_scrollBar && isScrollable())
        m_scrollBar->Show(true);
}

void CTavoView::stopped()
{
    emit scrollingStopped();
}

void CTavoView::zeroUnusedComponent(QPoint& p)
{
    if (m_orientation == Qt::Horizontal)
        p.setY(0);
    else
        p.setX(0);
}

void CTavoView::ensureVisible(const CTavoObject* item, bool animate, const QRect& margins, bool clip)
{
    if (!item || indexOf(item) < 0 || !isScrollable())
        return;
    QRect r = item->rect();
    r.setLeft(r.left() - margins.left());
    r.setTop(r.top() - margins.top());
    r.setRight(r.right() + margins.width());
    r.setBottom(r.bottom() + margins.height());
    const QRect visible = visibleRect();
    if (visible.contains(r))
        return;
    const QPoint d = visible.contains(r.topLeft())
                         ? QPoint(visible.right() - r.right(), visible.bottom() - r.bottom())
                         : QPoint(visible.left() - r.left(), visible.top() - r.top());
    const QPoint target = scrollOffset() - QPoint(toInt(d.x() * double(m_scaleX)), toInt(d.y() * double(m_scaleY)));
    setTargetOffset(target, animate, 0.0f, clip);
}

void CTavoView::scrollItemToTop(const CTavoObject* item)
{
    if (!item || indexOf(item) < 0 || !isScrollable())
        return;
    const QPoint d = mapPointInView(m_contentRect.topLeft()) - item->topLeft();
    setScrollOffsetAndState(scrollOffset() -
                            QPoint(toInt(d.x() * double(m_scaleX)), toInt(d.y() * double(m_scaleY))));
}

void CTavoView::scrollItemAboveTop(const CTavoObject* item)
{
    if (!item || indexOf(item) < 0 || !isScrollable())
        return;
    const QPoint d = mapPointInView(m_contentRect.topLeft()) - QPoint(item->left(), item->bottom());
    setScrollOffsetAndState(scrollOffset() -
                            QPoint(toInt(d.x() * double(m_scaleX)), toInt(d.y() * double(m_scaleY))));
}

void CTavoView::onScrollContent(qreal ratio)
{
    const int top = toInt((double(m_contentSize.height()) - m_viewRect.height()) * ratio);
    m_viewRect.moveTo(0, top);
    if (m_scrollBar)
        m_scrollBar->setViewPos(top);
    // The finger machine starts its next drag from here.
    resetOffset(scrollOffset());
    update();
}

void CTavoView::onScrollControlled(QEvent::Type type, CTavoScrollBar::ScrollControlT control)
{
    if (type != QEvent::KeyPress)
        return;
    const int height = m_viewRect.height();
    const qint64 last = qint64(m_contentSize.height()) - height;
    qint64 top = m_viewRect.top();
    switch (control) {
    case CTavoScrollBar::ScrollTenthForward:
        top = qMin(top + height / 10, last);
        break;
    case CTavoScrollBar::ScrollTenthBack:
        top = qMax<qint64>(top - height / 10, 0);
        break;
    case CTavoScrollBar::ScrollHalfForward:
        top = qMin(top + height / 2, last);
        break;
    case CTavoScrollBar::ScrollHalfBack:
        top = qMax<qint64>(top - height / 2, 0);
        break;
    default:
        break;
    }
    m_viewRect.moveTo(0, saturate(top));
    if (m_scrollBar)
        m_scrollBar->setViewPos(m_viewRect.top());
    resetOffset(scrollOffset());
    update();
}

// --- focus ---------------------------------------------------------------------

void CTavoView::setFocusedItem(int index, bool instant, Qt::FocusReason reason)
{
    if (index < 0) {
        for (CTavoObject* item : qAsConst(m_items)) {
            if (item && item->isFocused())
                item->setFocused(false);
        }
        m_focusedItem = -1;
        return;
    }
    if (m_items.isEmpty()) {
        m_focusedItem = -1;
        emit focusChanged(-1, nullptr, reason);
        return;
    }
    index = qMin(index, m_items.size() - 1);
    for (int i = 0; i < m_items.size(); ++i) {
        CTavoObject* other = m_items[i];
        if (other && i != index && other->isFocused())
            other->setFocused(false);
    }
    if (m_items[index])
        m_items[index]->setFocused(true);
    if (index == m_focusedItem)
        return;

    const bool wasAuto = isBeingAutoScrolled();
    if (CTavoObject* item = m_items[index]) {
        if (!item->isInitialized() && m_visible && m_parent && m_parent->isVisible())
            emit requestInitialization(item);
    }
    // The handler may have put a built row in place of the placeholder.
    CTavoObject* item = itemAt(index);
    if (item) {
        const QRect visible = visibleRect();
        if (!visible.contains(item->rect())) {
            const int dx = item->left() < visible.left() ? item->left() - visible.left()
                                                         : item->right() - visible.right();
            const int dy = item->top() < visible.top() ? item->top() - visible.top()
                                                       : item->bottom() - visible.bottom();
            const bool animate = m_smoothScroll && !instant && !(reason == Qt::TabFocusReason && wasAuto);
            if (!isBeingScrolled() && !instant) {
                const QPoint target = scrollOffset() + QPoint(roundInt(offsetScale() * dx), roundInt(offsetScale() * dy));
                setTargetOffset(target, animate, 0.0f, true);
                resetOffset(scrollOffset());
            }
        }
    }
    update();
    m_focusedItem = index;
    emit focusChanged(index, item, reason);
    if (instant)
        resetOffset(scrollOffset());
}

void CTavoView::setFocusedItem(CTavoObject* item, bool instant)
{
    const int index = item ? indexOf(item) : -1;
    if (index < 0)
        return;
    ensureVisible(item, !instant, QRect(), false);
    setFocusedItem(index, instant, Qt::OtherFocusReason);
}

void CTavoView::focusFirstObject(const char* className)
{
    if (!className)
        return;
    for (CTavoObject* item : qAsConst(m_items)) {
        if (item && item->isVisible() && item->inherits(className)) {
            setFocusedItem(item, false);
            return;
        }
    }
}

int CTavoView::determineNextItemDelta(int key) const
{
    if (m_orientation == Qt::Vertical) {
        switch (key) {
        case Qt::Key_Up:
            return -1;
        case Qt::Key_Down:
            return 1;
        case Qt::Key_NumberSign:
        case Qt::Key_Asterisk: {
            const CTavoObject* first = m_items.isEmpty() ? nullptr : m_items.first();
            if (!m_pageNavigation || !first)
                return 0;
            const int row = first->height() + m_itemGap;
            if (row <= 0)
                return 0;
            const int rows = m_contentRect.height() / row;
            return key == Qt::Key_NumberSign ? rows : -rows;
        }
        default:
            return 0;
        }
    }
    if (key == Qt::Key_Left)
        return -1;
    if (key == Qt::Key_Right)
        return 1;
    return 0;
}

int CTavoView::determineNextItemToFocus(int key, bool& handled)
{
    const int delta = determineNextItemDelta(key);
    handled = delta != 0;
    if (m_items.isEmpty() || delta == 0)
        return m_focusedItem;
    const int n = m_items.size();
    const int pastBeginning = m_walkPastEnds ? -1 : 0;
    const int pastEnd = m_walkPastEnds ? n : n - 1;
    for (qint64 i = qint64(m_focusedItem) + delta;; i += delta) {
        if (i >= n)
            return pastEnd;
        if (i < 0)
            return pastBeginning;
        const CTavoObject* item = m_items[int(i)];
        if (item && item->isVisible() && item->isFocusable())
            return int(i);
        if (i <= 0 && !item)
            return pastBeginning;
    }
}

// --- input ---------------------------------------------------------------------

void CTavoView::resetPaneState()
{
    m_paneDragging = false;
    m_paneArmed = false;
    m_paneStart = QPoint(0, 0);
}

bool CTavoView::onTopAt(const QPoint& point)
{
    // A plain surface says yes; one that puts something above the view may say no.
    if (CTavoLayoutWidget* surface = qobject_cast<CTavoLayoutWidget*>(m_parent))
        return surface->isOnTopAt(this, point);
    return true;
}

bool CTavoView::eventFilter(QObject* object, QEvent* event)
{
    Q_UNUSED(object);
    if (!m_visible || !m_enabled || !event)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        resetPaneState();
        if (!onTopAt(mouse->pos()))
            return false;
        if (!rect().contains(mouse->pos()) && !m_dragRect.contains(mouse->pos()))
            return false;
        // A finger that stops a moving list presses nothing under it.
        const bool wasMoving = isBeingAutoScrolled();
        handleMousePress(mouse);
        if (wasMoving && mouse->isAccepted())
            return true;
        return mouseEventInView(mouse);
    }
    case QEvent::MouseButtonRelease: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        handleMouseRelease(mouse);
        if (!onTopAt(mouse->pos())) {
            resetPaneState();
            return false;
        }
        const bool wasDragging = m_paneDragging;
        const bool result = m_paneDragging ? false : mouseEventInView(mouse);
        double velocity = 0.0;
        if (wasDragging || m_paneDragging) {
            const QPoint s = estimateSpeed(mouse->globalPos(), true);
            if (qAbs(qint64(s.x())) > 2 * qAbs(qint64(s.y())))
                velocity = double(s.x());
        }
        emit paneDragStopped(velocity);
        resetPaneState();
        return result;
    }
    case QEvent::MouseMove: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (m_paneStart != QPoint(-1, -1)) {
            if (!m_paneArmed) {
                m_paneStart = mouse->pos();
                m_paneArmed = true;
            }
            if (m_paneDragging) {
                emit paneDragged(mouse->globalPos());
            } else if (qAbs(qint64(mouse->pos().x()) - m_paneStart.x()) > m_paneDragThreshold) {
                emit paneDragStarted(mouse->globalPos());
                m_paneDragging = true;
            }
        }
        if (!m_paneDragging && isScrollable())
            handleMouseMove(mouse);
        CTavoWidget* pressed = m_pressedItem.data();
        if (!pressed)
            return false;
        if (pressed->contains(mapPointInView(mouse->pos())))
            return false;
        CTavoButton* button = qobject_cast<CTavoButton*>(pressed);
        if (button && !m_holdTimer->isActive() && button->settings().m_longPress && button->isDown()) {
            // A long press that has held: leaving the key gives its click.
            m_pressedItem = nullptr;
            button->handleEvent(QEvent::MouseButtonRelease, mapPointInView(mouse->pos()));
            return true;
        }
        m_holdTimer->stop();
        pressed->setDown(false);
        m_pressedItem = nullptr;
        return true;
    }
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return keyPressEvent(static_cast<QKeyEvent*>(event));
    case QEvent::Show:
        showScrollBar();
        return false;
    default:
        return false;
    }
}

bool CTavoView::mouseEventInView(QMouseEvent* event)
{
    if (!event || isBeingScrolled())
        return false;
    if (!rect().contains(event->pos()))
        return false;
    const QPoint point = mapPointInView(event->pos());
    const QEvent::Type type = event->type();
    for (int i = 0; i < m_items.size(); ++i) {
        CTavoObject* item = m_items[i];
        if (!item || !item->isVisible())
            continue;
        CTavoWidget* widget = qobject_cast<CTavoWidget*>(item);
        if (!widget)
            continue;
        const bool mine = widget == m_pressedItem.data() && type != QEvent::MouseButtonPress;
        if (!widget->contains(point) && !mine)
            continue;
        if (!widget->handleEvent(type, point))
            continue;
        CTavoWidget* pressed = m_pressedItem.data();
        if (pressed && pressed != widget) {
            pressed->setDown(false);
            m_holdTimer->stop();
        }
        if (type == QEvent::MouseButtonPress) {
            m_pressedItem = widget;
            if (qobject_cast<CTavoButton*>(widget))
                m_holdTimer->start(kHoldTimeoutMs);
        } else if (type == QEvent::MouseButtonRelease) {
            if (m_navFocusesItem && pressed)
                setFocusedItem(pressed, false);
            m_holdTimer->stop();
            if (pressed)
                pressed->setDown(false);
            m_pressedItem = nullptr;
        }
        update();
        break;
    }
    return true;
}

void CTavoView::cancelPress()
{
    if (CTavoWidget* pressed = m_pressedItem.data()) {
        CTavoButton* button = qobject_cast<CTavoButton*>(pressed);
        const bool heldLongPress = button && !m_holdTimer->isActive() && button->settings().m_longPress;
        if (!heldLongPress) {
            m_holdTimer->stop();
            pressed->setDown(false);
            m_pressedItem = nullptr;
        }
    }
    update();
}

bool CTavoView::selectFocused(QKeyEvent* event, bool handled)
{
    CTavoObject* item = itemAt(m_focusedItem);
    if (m_focusedItem < 0 || m_focusedItem >= m_items.size())
        return handled;
    if (!item)
        return true;
    item->handleEvent(event->type(), QPoint(0, 0));
    if (event->type() == QEvent::KeyPress) {
        m_pressedItem = qobject_cast<CTavoWidget*>(item);
        m_holdTimer->start(kHoldTimeoutMs);
    } else if (event->type() == QEvent::KeyRelease) {
        m_pressedItem = nullptr;
        m_holdTimer->stop();
    }
    return true;
}

bool CTavoView::keyPressEvent(QKeyEvent* event)
{
    if (!event || m_ignoreKeys)
        return false;
    const int key = event->key();
    if (m_ignoreSelectKey && (key == Qt::Key_Return || key == Qt::Key_Enter))
        return false;
    const bool press = event->type() == QEvent::KeyPress;

    if (!m_navFocusesItem) {
        // Plain scrolling by a tenth of the view.
        int delta = 0;
        if (CTavoButtonDefs::isNavigationKey(event)) {
            if (key == Qt::Key_Up)
                delta = -(height() / 10);
            else if (key == Qt::Key_Down)
                delta = height() / 10;
        }
        if (delta != 0 && press)
            setTargetOffset(QPoint(0, saturate(qint64(m_viewRect.top()) + delta)), false, 0.0f, true);
        return delta != 0;
    }

    bool handled = false;
    const int next = determineNextItemToFocus(key, handled);
    const int n = m_items.size();
    if (handled) {
        if (next > n)
            return m_navSelectsItem ? selectFocused(event, handled) : handled;
        if (press) {
            if (m_focusedItem == -1)
                emit updateFocusItem(m_focusedItem, next);
            if (next == n) {
                setTargetOffset(QPoint(m_viewRect.left(), m_viewRect.bottom()), m_smoothScroll, 0.0f, true);
                update();
            } else if (next == -1) {
                setTargetOffset(QPoint(0, 0), m_smoothScroll, 0.0f, true);
                update();
                if (m_focusedItem == 0)
                    emit updateFocusItem(0, -1);
            } else {
                setFocusedItem(next, false, Qt::TabFocusReason);
            }
        }
        return m_navSelectsItem ? selectFocused(event, handled) : handled;
    }
    if (key != Qt::Key_Return)
        return false;
    return selectFocused(event, handled);
}

bool CTavoView::handleKeyPressAndHold(CTavoWidget* widget, QEvent::Type type)
{
    if (!widget)
        return false;
    widget->handleEvent(type, QPoint(0, 0));
    CTavoWidget* pressed = m_pressedItem.data();
    if (pressed && pressed != widget) {
        pressed->setDown(false);
        m_holdTimer->stop();
    }
    bool result = false;
    if (type == QEvent::KeyPress) {
        m_pressedItem = widget;
        if (qobject_cast<CTavoButton*>(widget))
            m_holdTimer->start(kHoldTimeoutMs);
        result = true;
    } else if (type == QEvent::KeyRelease) {
        m_holdTimer->stop();
        widget->setDown(false);
        m_pressedItem = nullptr;
        result = true;
    }
    update();
    return result;
}

void CTavoView::onHoldTimeout()
{
    if (CTavoButton* button = qobject_cast<CTavoButton*>(m_pressedItem.data()))
        button->onHoldTimeout();
}

void CTavoView::beginPaneAnimation()
{
    cancelPress();
}

void CTavoView::endPaneAnimation()
{
    paneDragCancelled();
    emit paneAnimationDone();
}

void CTavoView::paneDragCancelled()
{
    m_paneStart = QPoint(-1, -1);
    m_paneDragging = false;
    m_paneArmed = false;
}

// --- visibility and report -----------------------------------------------------

void CTavoView::setVisible(bool visible)
{
    if (!m_parent || visible == m_visible)
        return;
    CTavoWidget::setVisible(visible);
    if (visible) {
        m_parent->installEventFilter(this);
        if (m_scrollBar)
            m_parent->installEventFilter(m_scrollBar);
    } else {
        m_parent->removeEventFilter(this);
        if (m_scrollBar)
            m_parent->removeEventFilter(m_scrollBar);
    }
}

void CTavoView::report(QList<QObject*>& done, QDomNode& parent)
{
    if (!tavoToolGetTestAutomationFlag() || done.lastIndexOf(this) >= 0 || parent.isNull() || !m_visible)
        return;
    CTavoWidget::report(done, parent);
    // The rows in view go under the view's element, in list order.
    QDomNode own = parent.lastChild();
    if (own.isNull())
        return;
    const QRect visible = visibleRect();
    for (CTavoObject* item : qAsConst(m_items)) {
        CTavoWidget* widget = qobject_cast<CTavoWidget*>(item);
        if (widget && widget->isVisible() && widget->intersects(visible) && done.lastIndexOf(widget) < 0)
            widget->report(done, own);
    }
}

void CTavoView::refreshDom()
{
    CTavoWidget::refreshDom();
    if (!tavoToolGetTestAutomationFlag())
        return;
    QDomElement element = m_dom.firstChildElement();
    if (element.isNull())
        return;
    using UITA::CTavoUITA;
    const QPoint offset(unscale(m_viewRect.left(), m_scaleX), unscale(m_viewRect.top(), m_scaleY));
    element.setAttribute(CTavoUITA::name(UITA::ViewOffset), QStringLiteral("%1:%2").arg(offset.x()).arg(offset.y()));
    element.setAttribute(CTavoUITA::name(UITA::ViewContentSize),
                         QStringLiteral("%1x%2").arg(m_contentSize.width()).arg(m_contentSize.height()));
    element.setAttribute(CTavoUITA::name(UITA::Highlighted), m_focusedItem);
    element.setAttribute(CTavoUITA::name(UITA::Total), m_items.size());
    element.setAttribute(CTavoUITA::name(UITA::FrameRate), QString::number(getLastFrameRate(), 'f', 1));
}
