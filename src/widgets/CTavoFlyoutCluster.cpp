#include "widgets/CTavoFlyoutCluster.h"

#include <QApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QScreen>
#include <QTimer>
#include <cstring>

#include "CTXMLUriLib.h"
#include "core/TavoGlobals.h"
#include "layout/CTavoLayoutMgr.h"
#include "log/GuiLog.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoButtonDefs.h"
#include "widgets/CTavoFlyoutItem.h"
#include "widgets/CTavoParagraph.h"
#include "widgets/KineticScrollPrivate.h"

namespace {

const char kGroupDiv[] = "GROUPDIV";
const int kDefaultFlyinTimeout = 5000;
const int kFrameMsec = 30;
// Without a parent the flyout is as tall as it may get.
const int kScreenHeightWithoutParent = 1200;
// A longer phone name is cut to kNameCut characters and an ellipsis.
const int kNameLimit = 23;
const int kNameCut = 21;

bool isDivText(const char* text)
{
    return std::strcmp(text, kGroupDiv) == 0;
}

} // namespace

bool details::isGroupDivItem(const CTXMLFlyoutItem& item)
{
    // The texts a document gives an item: label, URL and badge.
    return isDivText(item.label) && isDivText(item.url) && isDivText(item.badge);
}

CTavoFlyoutCluster::CTavoFlyoutCluster(QWidget* parent)
    : CTavoLayoutWidget(parent)
    , KineticScroll()
    , m_animationGroup(new QParallelAnimationGroup(this))
    , m_needsRefresh(true)
    , m_itemGap(2)
    , m_isOpen(false)
    , m_focusedIndex(0)
    , m_restoreFocus(true)
    , m_focusOnParent(false)
    , m_sideBySide(false)
    , m_keyIndex(-1)
    , m_groupSize(0)
    , m_moreEnabled(false)
    , m_itemsOffsetY(0)
    , m_itemsMaximum(20)
    , m_spaceBelow(0)
    , m_showInfoBanner(true)
    , m_isOnHome(true)
    , m_menuTranslate(0)
    , m_banner(nullptr)
    , m_flyinTimer(new QTimer(this))
    , m_snapToTop(false)
    , m_reportNetworkUnavailable(true)
    , m_showIsOnHome(true)
    , m_showDimLayer(false)
    , m_invertTextWhenFocused(false)
    , m_borderOutlineWidth(0)
    , m_styleItemsOffsetY(0)
    , m_arrow(Qt::NoArrow)
    , m_scrollOffset(0, 0)
    , m_shownCount(0)
    , m_leftMargin(0)
{
    m_banner = new CTavoParagraph(this);
    m_banner->setObjectName(QStringLiteral("flyout-system-name-label"));
    m_banner->setSupportHtml(true);
    m_banner->setVisible(false);
    m_flyinTimer->setSingleShot(true);
    m_flyinTimer->setInterval(kDefaultFlyinTimeout);
    connect(m_flyinTimer, &QTimer::timeout, this, &CTavoFlyoutCluster::onTimeout);
    setThreshold(20);
    setOrientations(Qt::Vertical);
}

CTavoFlyoutCluster::~CTavoFlyoutCluster() = default;

// --- content -----------------------------------------------------------------

namespace {

// The fields whose change the user would see; a change of anything else
// (enabled, value) leaves the shown flyout as it is.
bool sameContent(const CTXMLFlyoutCluster& a, const CTXMLFlyoutCluster& b)
{
    if (a.count() != b.count())
        return false;
    for (int i = 0; i < a.count(); ++i) {
        const CTXMLFlyoutItem& x = a[i];
        const CTXMLFlyoutItem& y = b[i];
        if (std::strcmp(x.url, y.url) != 0 || std::strcmp(x.label, y.label) != 0
            || std::strcmp(x.abbreviation, y.abbreviation) != 0 || std::strcmp(x.badge, y.badge) != 0
            || x.icon != y.icon || x.selected != y.selected)
            return false;
    }
    return true;
}

} // namespace

void CTavoFlyoutCluster::init(CTXMLFlyoutCluster* cluster)
{
    if (!cluster) {
        guiLog(3, "CTavoFlyoutCluster::init: no cluster");
        return;
    }
    if (!m_needsRefresh && sameContent(*cluster, m_cluster))
        return;
    if (cluster != &m_cluster)
        m_cluster = *cluster;
    refresh(true);
}

void CTavoFlyoutCluster::refresh(bool report)
{
    const int count = qMin(m_cluster.count(), qMax(0, m_itemsMaximum));
    if (m_cluster.count() > count)
        guiLog(2, "CTavoFlyoutCluster: %d items, %d shown", m_cluster.count(), count);
    createItems(count);
    m_shownCount = count;
    fillItems(count);
    if (m_sideBySide) {
        sideBySideLayout(&m_cluster);
    } else if (availableHeight() < height() && (m_showInfoBanner || m_isOnHome)) {
        // Already past the bottom: only the height follows.
        resize(width(), qMax(0, qMin(contentHeight(count), availableHeight())));
    } else {
        placeItems(count);
    }

    if (report) {
        QString labels;
        for (int i = 0; i < count; ++i) {
            if (m_items[i]->isGroupDiv())
                continue;
            if (!labels.isEmpty())
                labels += QLatin1Char(';');
            labels += QString::fromUtf8(m_cluster[i].label);
        }
        emit layoutWidgetSignal(QString::fromLatin1(CTXMLUriLib::uri(TxmlUriGuiEvent)),
                                QString::asprintf("%s=%s;%s=%d", CTXMLUriLib::varname(TxmlVarLabels),
                                                  labels.toUtf8().constData(),
                                                  CTXMLUriLib::varname(TxmlVarKeyIndex), m_keyIndex));
    }
    setDefaultFocus();
    if (m_showInfoBanner)
        updateBanner();
    m_needsRefresh = false;
    updateScrollLimits();
    update();
}

void CTavoFlyoutCluster::createItems(int count)
{
    while (m_items.size() < count) {
        auto* item = new CTavoFlyoutItem(this);
        item->setInvertTextWhenFocused(m_invertTextWhenFocused);
        item->layout();
        item->setVisible(false);
        m_items.append(item);
    }
    for (int i = count; i < m_items.size(); ++i) {
        m_items[i]->setVisible(false);
        m_items[i]->setFocused(false);
    }
    if (m_itemPositions.size() < m_items.size())
        m_itemPositions.resize(m_items.size());
}

void CTavoFlyoutCluster::fillItems(int count)
{
    int choices = 0;
    for (int i = 0; i < count; ++i) {
        if (!details::isGroupDivItem(m_cluster[i]))
            ++choices;
    }
    int seen = 0;
    for (int i = 0; i < count; ++i) {
        const CTXMLFlyoutItem& source = m_cluster[i];
        CTavoFlyoutItem* item = m_items[i];
        const bool div = details::isGroupDivItem(source);
        if (div != item->isGroupDiv()) {
            item->setGroupDiv(div);
            item->layout();
        }
        int quick = -1;
        if (!div) {
            ++seen;
            // Digits 1 to 9, then 0 for the tenth.
            quick = seen <= 9 ? seen : (seen == 10 ? 0 : -1);
            if (!source.hasQuickAccess || choices == 1)
                quick = -1;
        }
        item->init(source, quick);
    }
}

void CTavoFlyoutCluster::placeItems(int count)
{
    const int x = leftMargin();
    int y = m_itemsOffsetY;
    for (int i = 0; i < count; ++i) {
        CTavoFlyoutItem* item = m_items[i];
        m_itemPositions[i] = y;
        item->move(x, y);
        item->setVisible(true);
        y += item->height() + m_itemGap;
    }
    resize(width(), qMax(0, qMin(y, availableHeight())));
}

int CTavoFlyoutCluster::contentHeight(int count) const
{
    int y = m_itemsOffsetY;
    for (int i = 0; i < count && i < m_items.size(); ++i)
        y += m_items[i]->height() + m_itemGap;
    return y;
}

int CTavoFlyoutCluster::availableHeight() const
{
    const int screenHeight = parentWidget() ? parentWidget()->height() : kScreenHeightWithoutParent;
    return screenHeight - y() - m_spaceBelow;
}

QSize CTavoFlyoutCluster::screenSize() const
{
    if (parentWidget())
        return parentWidget()->size();
    if (QScreen* screen = QGuiApplication::primaryScreen())
        return screen->size();
    return QSize(0, kScreenHeightWithoutParent);
}

int CTavoFlyoutCluster::leftMargin() const
{
    return m_leftMargin;
}

void CTavoFlyoutCluster::getGroupConfig(QList<int>& groups, CTXMLFlyoutCluster* cluster, int& maxRows,
                                        QSize& size, int& itemHeight, int& itemWidth)
{
    groups.clear();
    maxRows = 0;
    itemHeight = 0;
    itemWidth = 0;
    size = QSize(0, 0);
    if (!cluster)
        return;
    const int count = qMin(qMin(cluster->count(), qMax(0, m_itemsMaximum)), m_items.size());
    int rows = 0;
    CTavoFlyoutItem* last = nullptr;
    for (int i = 0; i < count; ++i) {
        CTavoFlyoutItem* row = m_items[i];
        row->setVisible(true);
        if (details::isGroupDivItem((*cluster)[i])) {
            groups.append(rows);
            rows = 0;
            row->setGroupDiv(true);
            continue;
        }
        ++rows;
        last = row;
    }
    groups.append(rows);
    if (last) {
        itemHeight = last->height() + m_itemGap;
        itemWidth = last->width() + m_itemGap;
    }
    for (int n : qAsConst(groups))
        maxRows = qMax(maxRows, n);
    size = QSize(groups.size() * itemWidth, maxRows * itemHeight);
}

void CTavoFlyoutCluster::sideBySideLayout(CTXMLFlyoutCluster* cluster)
{
    if (!cluster)
        return;
    QList<int> groups;
    int maxRows = 0;
    QSize size;
    int itemHeight = 0;
    int itemWidth = 0;
    getGroupConfig(groups, cluster, maxRows, size, itemHeight, itemWidth);
    const int margin = leftMargin();
    resize(size.width() + 2 * margin,
           qMax(0, qMin(size.height() + 2 * m_itemGap + m_itemsOffsetY, availableHeight())));
    // The banner spans the groups.
    if (m_banner->width() != width())
        m_banner->resize(QSize(width(), m_banner->height()));

    const int count = qMin(qMin(cluster->count(), qMax(0, m_itemsMaximum)), m_items.size());
    int group = 0;
    int row = 0;
    for (int i = 0; i < count; ++i) {
        CTavoFlyoutItem* item = m_items[i];
        if (details::isGroupDivItem((*cluster)[i])) {
            // A divider only separates the groups here.
            item->setVisible(false);
            ++group;
            row = 0;
            continue;
        }
        // Shorter groups stand lower: the groups end on one line.
        const int rows = groups.value(group);
        const int y = m_itemsOffsetY + m_itemGap + (maxRows - rows + row) * itemHeight;
        const int x = margin + group * itemWidth;
        m_itemPositions[i] = y;
        item->move(x, y);
        ++row;
    }
}

void CTavoFlyoutCluster::updateScrollLimits()
{
    KineticScroll::reset();
    setScrollOffset(QPoint(0, 0));
    const int itemHeight = m_items.isEmpty() || m_shownCount == 0 ? 0 : m_items.first()->height();
    const int max = (itemHeight + m_itemGap) * numOfVisibleItems() + m_itemsOffsetY - height() - 1;
    setMaxOffset(QPoint(0, qMax(0, max)));
    setScrollSpringLength(int(itemHeight * 0.25));
}

// --- banner ------------------------------------------------------------------

void CTavoFlyoutCluster::updateBanner()
{
    CTavoLayoutMgr* manager = CTavoLayoutMgr::instance();
    QString name;
    QString number;
    QString pin;
    QString address;
    bool networkUp = true;
    bool chained = false;
    QString chainedAddress;
    if (manager) {
        name = manager->systemName();
        number = manager->systemNumber();
        pin = manager->contentPIN();
        networkUp = manager->isNetworkUp();
        address = manager->systemIp(false);
        chained = manager->isDaisyChainedScreenShown();
        chainedAddress = manager->daisyChainedIP();
    }
    const bool cut = name.length() > kNameLimit;
    QString shownName = cut ? name.left(kNameCut).toHtmlEscaped() + QStringLiteral("&#8230;") : name.toHtmlEscaped();

    // "..." is what the platform says while it has no address yet.
    const bool known = !address.isEmpty() && address != QLatin1String("...");
    QString ip;
    if (!networkUp && m_reportNetworkUnavailable) {
        ip = tr("Network Unavailable");
    } else if (known) {
        ip = QStringLiteral("IP: ") + address.toHtmlEscaped();
        if (chained && !chainedAddress.isEmpty() && chainedAddress != QLatin1String("..."))
            ip += QLatin1Char(' ') + chainedAddress.toHtmlEscaped() + QStringLiteral(" (") + tr("Local")
                + QLatin1Char(')');
    }
    const QString gap = cut ? QStringLiteral("&nbsp;") : QStringLiteral("&nbsp;&nbsp;&nbsp;");
    number = number.toHtmlEscaped();
    pin = pin.toHtmlEscaped();

    QString text;
    if (number.isEmpty() && !pin.isEmpty())
        text = tr("<div id=\"name\">%1</div><div id=\"ip\">%2 %3</div>").arg(shownName, ip, gap + pin);
    else if (!number.isEmpty() && chained && !pin.isEmpty())
        text = tr("<div id=\"name\">%1</div><div id=\"numsmall\">%2</div><div id=\"ipsmall\">%3<br>%4</div>")
                   .arg(shownName, number, ip, pin);
    else if (!number.isEmpty() && !pin.isEmpty())
        text = tr("<div id=\"name\">%1</div><div id=\"num\">%2</div><div id=\"ip\">%3 %4</div>")
                   .arg(shownName, number, ip, gap + pin);
    else if (!number.isEmpty())
        text = tr("<div id=\"name\">%1</div><div id=\"num\">%2</div><div id=\"ip\">%3</div>")
                   .arg(shownName, number, ip);
    else
        text = tr("<div id=\"name\">%1</div><div id=\"ip\">%2</div>").arg(shownName, ip);
    if (text != m_banner->text())
        m_banner->setText(text);
    m_banner->setVisible(m_showInfoBanner && m_itemsOffsetY > 0);
}

void CTavoFlyoutCluster::setShowInfoBanner(bool show)
{
    const int offset = show ? m_styleItemsOffsetY : 0;
    if (offset != m_itemsOffsetY || show != m_showInfoBanner)
        m_needsRefresh = true;
    m_showInfoBanner = show;
    m_itemsOffsetY = offset;
    m_banner->setVisible(show && m_itemsOffsetY > 0 && !m_banner->text().isEmpty());
}

void CTavoFlyoutCluster::setIsOnHomeScreen(bool onHome)
{
    if (!m_showIsOnHome)
        return;
    m_isOnHome = onHome;
    if (!m_items.isEmpty())
        m_items.first()->setIsHome(onHome);
}

// --- focus and choice --------------------------------------------------------

int CTavoFlyoutCluster::numOfVisibleItems() const
{
    int n = 0;
    for (const CTavoFlyoutItem* item : m_items) {
        if (item->isVisible())
            ++n;
    }
    return n;
}

int CTavoFlyoutCluster::lastNonGroupDivIndex() const
{
    for (int i = m_items.size() - 1; i >= 0; --i) {
        if (m_items[i]->isVisible() && !m_items[i]->isGroupDiv())
            return i;
    }
    return -1;
}

int CTavoFlyoutCluster::convertItemToIndex(int n) const
{
    if (n < 1)
        return -1;
    int seen = 0;
    for (int i = 0; i < m_items.size(); ++i) {
        const CTavoFlyoutItem* item = m_items[i];
        if (!item->isVisible() || item->isGroupDiv())
            continue;
        if (++seen == n)
            return i;
    }
    return -1;
}

void CTavoFlyoutCluster::setDefaultFocus()
{
    int chosen = -1;
    for (int i = 0; i < m_items.size(); ++i) {
        CTavoFlyoutItem* item = m_items[i];
        const bool candidate = chosen < 0 && item->isVisible() && item->isEnabled() && !item->isGroupDiv();
        if (candidate)
            chosen = i;
        item->setFocused(candidate);
    }
    m_focusedIndex = chosen < 0 ? 0 : chosen;
}

void CTavoFlyoutCluster::pickItem(int delta)
{
    if (delta == 0)
        return;
    const int step = delta > 0 ? 1 : -1;
    const int visible = numOfVisibleItems();
    for (int i = m_focusedIndex + step; i >= 0 && i < visible && i < m_items.size(); i += step) {
        CTavoFlyoutItem* item = m_items[i];
        if (item->isGroupDiv() || !item->isEnabled() || !item->isVisible())
            continue;
        if (CTavoFlyoutItem* old = m_items.value(m_focusedIndex))
            old->setFocused(false);
        item->setFocused(true);
        m_focusedIndex = i;
        ensureVisible(i);
        return;
    }
}

void CTavoFlyoutCluster::ensureVisible(int index)
{
    const CTavoFlyoutItem* item = m_items.value(index);
    if (!item)
        return;
    const int viewTop = m_scrollOffset.y() + m_itemsOffsetY;
    const int viewBottom = m_scrollOffset.y() + height();
    int offset = m_scrollOffset.y();
    if (item->top() < viewTop)
        offset -= viewTop - item->top();
    else if (item->bottom() + 1 > viewBottom)
        offset += item->bottom() + 1 - viewBottom;
    offset = qBound(0, offset, maxOffset().y());
    if (offset != m_scrollOffset.y()) {
        resetOffset(QPoint(0, offset));
        setScrollOffset(QPoint(0, offset));
    }
}

void CTavoFlyoutCluster::performQuickAccess(int digit, QEvent::Type type)
{
    QEvent::Type mouseType;
    Qt::MouseButtons buttons;
    if (type == QEvent::KeyPress) {
        mouseType = QEvent::MouseButtonPress;
        buttons = Qt::LeftButton;
    } else if (type == QEvent::KeyRelease) {
        mouseType = QEvent::MouseButtonRelease;
        buttons = Qt::NoButton;
    } else {
        return;
    }
    const int index = convertItemToIndex(digit == 0 ? 10 : digit);
    CTavoFlyoutItem* item = m_items.value(index);
    if (!item || item->rect().isNull() || !item->isEnabled())
        return;
    // A touch at the row's centre, as the finger would give it.
    const QPointF local = QPointF(item->center() - m_scrollOffset);
    const QWidget* top = window();
    const QPointF windowPos = top ? QPointF(mapTo(top, local.toPoint())) : local;
    const QPointF screenPos = QPointF(mapToGlobal(local.toPoint()));
    QMouseEvent touch(mouseType, local, windowPos, screenPos, Qt::LeftButton, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(this, &touch);
}

void CTavoFlyoutCluster::reportEvent()
{
    CTavoFlyoutItem* item = m_items.value(m_focusedIndex);
    if (!item)
        return;
    const QString data = QString::asprintf(
        "%s=%s;%s=%s;%s=%s;", CTXMLUriLib::varname(TxmlVarState), CTXMLUriLib::varname(TxmlVarPress),
        CTXMLUriLib::varname(TxmlVarKey), CTXMLUriLib::uri(TxmlUriFlyoutSelect),
        CTXMLUriLib::varname(TxmlVarValue), item->value().toUtf8().constData());
    emit layoutWidgetSignal(item->url(), data, 0);
}

void CTavoFlyoutCluster::selectFocused()
{
    CTavoFlyoutItem* item = m_items.value(m_focusedIndex);
    if (!item || !item->isVisible() || !item->isEnabled() || item->isGroupDiv())
        return;
    CTavoButton::playClickSound();
    reportEvent();
    if (m_moreEnabled && item->url() == QLatin1String("More"))
        flyOut();
    else
        flyIn(true, FlyinTimeoutOrSelection);
}

QString CTavoFlyoutCluster::getContextSensitiveInformation()
{
    if (CTavoFlyoutItem* item = m_items.value(m_focusedIndex))
        return item->url();
    return CTavoLayoutWidget::getContextSensitiveInformation();
}

// --- opening and closing -------------------------------------------------------

void CTavoFlyoutCluster::flyOut()
{
    m_isOpen = true;
    m_flyinTimer->start();
    Show(true);
    raise();
    QWidget* focus = QApplication::focusWidget();
    // Opened again while open ("More"): the focus from before the first opening stays.
    if (!(focus == this && m_previousFocus))
        m_previousFocus = focus ? focus : this;
    setFocus(Qt::ActiveWindowFocusReason);
    if (m_restoreFocus && m_parentWidget) {
        if (!m_focusOnParent)
            m_parentWidget->setFocused(true);
        else if (QWidget* surface = m_parentWidget->parentWidget())
            surface->setFocus(Qt::OtherFocusReason);
    }
    emit opened();
}

void CTavoFlyoutCluster::flyIn(bool animated, FlyinReason reason)
{
    // A flyout closed otherwise must not be closed again by its clock.
    m_flyinTimer->stop();
    m_animationGroup->stop();
    emit layoutWidgetSignal(QString::fromLatin1(CTXMLUriLib::uri(TxmlUriGuiEvent)),
                            QString::asprintf("%s=%d;%s=%d", CTXMLUriLib::varname(TxmlVarFlyIn), 1,
                                              CTXMLUriLib::varname(TxmlVarKeyIndex), m_keyIndex));
    if (m_restoreFocus && m_parentWidget)
        m_parentWidget->setFocused(false);
    QWidget* previous = m_previousFocus.data();
    if (previous && previous != this
        && (reason == FlyinRestoreFocus || reason == FlyinByKey
            || (reason == FlyinTimeoutOrSelection && previous->inherits("CTavoInput"))))
        previous->setFocus(Qt::OtherFocusReason);
    m_previousFocus = nullptr;
    setShowInfoBanner(true);
    m_isOpen = false;
    clearFocus();
    Hide(animated);
    clearFocus();
    emit closed();
}

void CTavoFlyoutCluster::onTimeout()
{
    flyIn(true, FlyinTimeoutOrSelection);
}

int CTavoFlyoutCluster::flyinTimeout() const
{
    return m_flyinTimer->interval();
}

bool CTavoFlyoutCluster::isFlyinTimerActive() const
{
    return m_flyinTimer->isActive();
}

// --- placing ---------------------------------------------------------------------

void CTavoFlyoutCluster::snapTo(const QRect& rect, SnapLocation fromCorner, SnapLocation toCorner,
                                Qt::ArrowType arrow)
{
    m_snapRect = rect;
    m_arrow = arrow;
    // Right and bottom corners lie one pixel outside the rectangle.
    QPoint p;
    switch (fromCorner) {
    case TopRight: p = QPoint(rect.right() + 1, rect.top()); break;
    case BottomLeft: p = QPoint(rect.left(), rect.bottom() + 1); break;
    case BottomRight: p = QPoint(rect.right() + 1, rect.bottom() + 1); break;
    default: p = rect.topLeft(); break;
    }
    if (m_snapToTop && fromCorner == BottomLeft)
        p = QPoint(0, 0);
    const int screenWidth = screenSize().width();
    if (screenWidth > 0) {
        // A rectangle on a neighbouring screen of a wider desktop.
        if (p.x() > screenWidth)
            p.rx() -= screenWidth;
        else if (p.x() < 0)
            p.rx() += screenWidth;
    }
    QPoint target = p;
    switch (toCorner) {
    case TopRight: target -= QPoint(width(), 0); break;
    case BottomLeft: target -= QPoint(0, height()); break;
    case BottomRight: target -= QPoint(width(), height()); break;
    default: break;
    }
    if (m_moreEnabled && (toCorner == BottomLeft || toCorner == BottomRight))
        target.setX(0);
    if (m_itemsOffsetY == 0)
        target.rx() += m_menuTranslate;
    move(target);

    // The skin's fly animations end and start where the flyout now stands.
    if (auto* show = qobject_cast<QPropertyAnimation*>(getAnimation("show-animation"))) {
        if (show->propertyName() == "pos")
            show->setEndValue(target);
        else if (show->propertyName() == "geometry")
            show->setEndValue(QRect(target, size()));
    }
    if (auto* hide = qobject_cast<QPropertyAnimation*>(getAnimation("hide-animation"))) {
        if (hide->propertyName() == "pos")
            hide->setStartValue(target);
        else if (hide->propertyName() == "geometry")
            hide->setStartValue(QRect(target, size()));
    }
}

void CTavoFlyoutCluster::snapTo(QWidget* widget, SnapLocation fromCorner, SnapLocation toCorner,
                                Qt::ArrowType arrow, const QString& settings)
{
    if (!widget) {
        guiLog(3, "CTavoFlyoutCluster::snapTo: no widget");
        return;
    }
    m_snapSettings = settings;
    QRect area(widget->mapToGlobal(QPoint(0, 0)), widget->size());
    if (parentWidget())
        area.moveTopLeft(parentWidget()->mapFromGlobal(area.topLeft()));
    snapTo(area, fromCorner, toCorner, arrow);
}

void CTavoFlyoutCluster::snapToParent(CTavoWidget* widget, SnapLocation fromCorner, SnapLocation toCorner,
                                      Qt::ArrowType arrow, const QString& settings, unsigned int offset)
{
    if (!widget) {
        guiLog(3, "CTavoFlyoutCluster::snapToParent: no widget");
        return;
    }
    m_parentWidget = widget;
    m_snapSettings = settings;
    // The owner's rectangle on its surface, in our parent's coordinates.
    QRect area = widget->rect();
    if (QWidget* surface = widget->parentWidget()) {
        area.moveTopLeft(surface->mapToGlobal(area.topLeft()));
        if (parentWidget())
            area.moveTopLeft(parentWidget()->mapFromGlobal(area.topLeft()));
    }
    area.setBottom(area.bottom() + int(qMin(offset, 1u << 20)));
    snapTo(area, fromCorner, toCorner, arrow);
}

// --- style ---------------------------------------------------------------------

void CTavoFlyoutCluster::layout()
{
    CTavoLayoutWidget::layout();
    CTavoWidgetStyle* style = m_styleSheet.get(this, m_pseudoState);
    // The banner's text is always markup.
    m_banner->setSupportHtml(true);
    if (!style)
        return;
    m_itemGap = style->Int(QStringLiteral("item-gap"), 2);
    m_sideBySide = style->Bool(QStringLiteral("side-by-side-groups"), false);
    m_groupSize = style->Int(QStringLiteral("max-items-height"), 0);
    m_moreEnabled = style->Bool(QStringLiteral("flyout-more-enable"), false);
    m_borderColor = style->Color(QStringLiteral("border-color"), QColor());
    m_styleItemsOffsetY = qMax(0, style->Int(QStringLiteral("items-offset-y"), 0));
    m_itemsOffsetY = m_showInfoBanner ? m_styleItemsOffsetY : 0;
    m_itemsMaximum = qMax(0, style->Int(QStringLiteral("items-maximum"), 20));
    m_spaceBelow = style->Int(QStringLiteral("space-below-flyout"), 0);
    m_menuTranslate = style->Int(QStringLiteral("menu-flyout-translate"), 0);
    const int timeout = style->Int(QStringLiteral("flyin-timeout"), kDefaultFlyinTimeout);
    m_flyinTimer->setInterval(timeout > 0 ? timeout : kDefaultFlyinTimeout);
    m_snapToTop = style->Bool(QStringLiteral("snap-to-top"), false);
    m_reportNetworkUnavailable = style->Bool(QStringLiteral("report-network-unavailable"), true);
    m_showIsOnHome = style->Bool(QStringLiteral("show-is-on-home"), true);
    m_showDimLayer = style->Bool(QStringLiteral("show-dim-layer"), false);
    m_invertTextWhenFocused = style->Bool(QStringLiteral("invert-text-when-focused"), false);
    m_borderOutlineWidth = qMax(0, style->Int(QStringLiteral("border-outline-width"), 0));
    m_borderPen = QPen(m_borderColor, m_borderOutlineWidth);
    m_borderPen.setJoinStyle(Qt::MiterJoin);
    // The content rectangle is in the parent's coordinates and stays where the style put it.
    m_leftMargin = m_contentRect.isValid() ? qMax(0, m_contentRect.left() - x()) : 0;
    setThreshold(int(style->UInt(QStringLiteral("dragging-threshold"), 10)));
    for (CTavoFlyoutItem* item : qAsConst(m_items))
        item->setInvertTextWhenFocused(m_invertTextWhenFocused);
    m_banner->setVisible(m_showInfoBanner && m_itemsOffsetY > 0 && !m_banner->text().isEmpty());

    // The rows stand where the new style puts them; the next init redoes them.
    m_needsRefresh = true;
    if (m_shownCount > 0)
        refresh(false);
}

void CTavoFlyoutCluster::setScrollOffset(const QPoint& offset)
{
    const QPoint p(0, offset.y());
    if (p == m_scrollOffset)
        return;
    m_scrollOffset = p;
    update();
}

void CTavoFlyoutCluster::cancelPress()
{
    // The finger scrolls: the row under it is not chosen.
    if (CTavoFlyoutItem* item = m_items.value(m_focusedIndex))
        item->setDown(false);
}

QRect CTavoFlyoutCluster::rectOfChildOnScreen(const CTavoWidget* child) const
{
    if (!child)
        return QRect();
    if (child == m_banner || child->parent() == m_banner)
        return child->rect();
    return child->rect().translated(-m_scrollOffset);
}

bool CTavoFlyoutCluster::isOnTopAt(CTavoWidget* child, const QPoint& point) const
{
    if (!child)
        return false;
    if (child == m_banner)
        return child->contains(point);
    // Rows under the banner are covered by it.
    return point.y() >= m_itemsOffsetY && rectOfChildOnScreen(child).contains(point);
}

int CTavoFlyoutCluster::itemIndexAt(const QPoint& point) const
{
    if (point.y() < m_itemsOffsetY)
        return -1;
    const QPoint content = point + m_scrollOffset;
    for (int i = 0; i < m_items.size(); ++i) {
        const CTavoFlyoutItem* item = m_items[i];
        if (item->isVisible() && item->contains(content))
            return i;
    }
    return -1;
}

// --- events --------------------------------------------------------------------

bool CTavoFlyoutCluster::event(QEvent* event)
{
    if (bRebootInitiated)
        return true;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        onMousePress(static_cast<QMouseEvent*>(event));
        event->accept();
        return true;
    case QEvent::MouseButtonRelease:
        onMouseRelease(static_cast<QMouseEvent*>(event));
        event->accept();
        return true;
    case QEvent::MouseMove:
        KineticScroll::handleMouseMove(static_cast<QMouseEvent*>(event));
        event->accept();
        return true;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        if (handleKey(static_cast<QKeyEvent*>(event)))
            return true;
        break;
    default:
        break;
    }
    return CTavoLayoutWidget::event(event);
}

void CTavoFlyoutCluster::onMousePress(QMouseEvent* event)
{
    const bool wasMoving = isBeingAutoScrolled();
    KineticScroll::handleMousePress(event);
    const QPoint point = event->pos();
    if (m_itemsOffsetY > 0 && point.y() < m_itemsOffsetY && rect().contains(point)) {
        flyIn(true, FlyinTimeoutOrSelection);
        return;
    }
    // A touch that stops a moving list chooses nothing.
    if (wasMoving)
        return;
    const int index = itemIndexAt(point);
    CTavoFlyoutItem* item = m_items.value(index);
    if (!item || item->isGroupDiv())
        return;
    if (index != m_focusedIndex) {
        if (CTavoFlyoutItem* old = m_items.value(m_focusedIndex))
            old->setFocused(false);
    }
    item->setFocused(true);
    item->setDown(true);
    m_focusedIndex = index;
}

void CTavoFlyoutCluster::onMouseRelease(QMouseEvent* event)
{
    KineticScroll::handleMouseRelease(event);
    CTavoFlyoutItem* item = m_items.value(m_focusedIndex);
    if (!item)
        return;
    // A press that became a scroll has lifted the row already.
    const bool pressed = item->isDown();
    if (pressed)
        item->setDown(false);
    if (pressed && m_isOpen && rectOfChildOnScreen(item).contains(event->pos()) && item->isEnabled())
        selectFocused();
}

bool CTavoFlyoutCluster::handleKey(QKeyEvent* event)
{
    if (!m_isOpen)
        return false;
    const SoKeyFuncT key = CTavoButtonDefs::getSoKey(event);
    const bool press = event->type() == QEvent::KeyPress;
    switch (key) {
    case SoKeyArrowDown:
        if (press)
            pickItem(-1);
        break;
    case SoKeyArrowUp:
        if (press)
            pickItem(1);
        break;
    case SoKeyArrowLeft:
    case SoKeyArrowRight:
    case SoKeyBack:
        // Closed, and the key goes on to whoever had the focus before.
        m_flyinTimer->start();
        if (press)
            flyIn(true, FlyinByKey);
        event->ignore();
        return false;
    case SoKeyDialpad0:
    case SoKeyDialpad1:
    case SoKeyDialpad2:
    case SoKeyDialpad3:
    case SoKeyDialpad4:
    case SoKeyDialpad5:
    case SoKeyDialpad6:
    case SoKeyDialpad7:
    case SoKeyDialpad8:
    case SoKeyDialpad9:
        m_flyinTimer->start();
        performQuickAccess(int(key) - int(SoKeyDialpad0), event->type());
        event->accept();
        return true;
    case SoKeyDialpadStar:
    case SoKeyDialpadPound:
        break;
    case SoKeySelect: {
        CTavoFlyoutItem* item = m_items.value(m_focusedIndex);
        if (press) {
            if (item && item->isEnabled() && !item->isGroupDiv())
                item->setDown(true);
        } else {
            if (item)
                item->setDown(false);
            m_flyinTimer->start();
            selectFocused();
            event->accept();
            return true;
        }
        break;
    }
    default:
        return false;
    }
    m_flyinTimer->start();
    event->accept();
    return true;
}

// --- painting ------------------------------------------------------------------

void CTavoFlyoutCluster::paintEvent(QPaintEvent* event)
{
    if (width() < 1 && height() < 1)
        return;
    const QRect area = event->rect();
    QPainter painter(this);
    painter.setClipRect(area);
    if (m_showDimLayer)
        painter.fillRect(rect(), QColor(0, 0, 0, 96));
    paintBackground(&painter);

    // The rows move under the banner by the scroll offset.
    const QRect shown = area.translated(m_scrollOffset);
    painter.translate(-m_scrollOffset);
    for (CTavoFlyoutItem* item : qAsConst(m_items)) {
        if (item->isVisible() && item->intersects(shown))
            item->paint(&painter);
    }
    painter.translate(m_scrollOffset);

    if (m_banner->isVisible()) {
        // Rows scrolled up pass behind the banner.
        if (m_scrollOffset.y() > 0 && m_background && m_background->style() != Qt::NoBrush)
            painter.fillRect(QRect(0, 0, width(), m_itemsOffsetY), *m_background);
        m_banner->paint(&painter);
    }
    if (m_borderOutlineWidth > 0 && m_borderColor.isValid()) {
        const int half = m_borderOutlineWidth / 2;
        painter.setPen(m_borderPen);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRect(half, half, width() - m_borderOutlineWidth, height() - m_borderOutlineWidth));
    }
    restartAutoScroll(kFrameMsec);
}
