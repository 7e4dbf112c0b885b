#pragma once
#include "tgui_export.h"
// The small menu that flies out of a softkey or a button: a vertical list of
// rows, optionally in groups side by side, under a banner with the phone's
// name, number and address. It is a surface of its own that scrolls its rows by
// finger, is driven by the arrow keys and the dial pad digits, closes by itself
// after a time without keys, and reports what it shows and what was chosen
// through layoutWidgetSignal.
//
// The content comes as a document's CTXMLFlyoutCluster; the rows are made once
// and reused, and init() with content equal to the shown one does nothing.
#include <QColor>
#include <QEvent>
#include <QList>
#include <QPen>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QString>
#include <QVector>

#include "CTXMLFlyoutCluster.h"
#include "layout/CTavoLayoutWidget.h"
#include "widgets/CTavoWidget.h"
#include "widgets/KineticScroll.h"

class QKeyEvent;
class QMouseEvent;
class QParallelAnimationGroup;
class QTimer;
class CTavoFlyoutItem;
class CTavoParagraph;

namespace details {
// A divider: an item whose texts are all "GROUPDIV".
TGUI_EXPORT bool isGroupDivItem(const CTXMLFlyoutItem& item);
}

class TGUI_EXPORT CTavoFlyoutCluster : public CTavoLayoutWidget, public KineticScroll
{
    Q_OBJECT

public:
    // Corners of a rectangle, of the snap target and of the flyout.
    enum SnapLocation { TopLeft = 0, TopRight = 1, BottomLeft = 2, BottomRight = 3 };
    // Why the flyout closes. 2 and 3 give the focus back to where it was before
    // opening, 0 only to a text field.
    enum FlyinReason { FlyinTimeoutOrSelection = 0, FlyinByOwner = 1, FlyinRestoreFocus = 2, FlyinByKey = 3 };

    explicit CTavoFlyoutCluster(QWidget* parent = nullptr);
    ~CTavoFlyoutCluster() override;

    void init(CTXMLFlyoutCluster* cluster);
    // Rows are made until there are count; none is ever deleted.
    void createItems(int count);
    void sideBySideLayout(CTXMLFlyoutCluster* cluster);
    void getGroupConfig(QList<int>& groups, CTXMLFlyoutCluster* cluster, int& maxRows, QSize& size,
                        int& itemHeight, int& itemWidth);

    void flyOut();
    void flyIn(bool animated, FlyinReason reason);
    void flyIn(bool animated, int reason) { flyIn(animated, FlyinReason(reason)); }

    // fromCorner of rect meets toCorner of the flyout; arrow tells the side of the owner.
    void snapTo(const QRect& rect, SnapLocation fromCorner, SnapLocation toCorner, Qt::ArrowType arrow);
    void snapTo(QWidget* widget, SnapLocation fromCorner, SnapLocation toCorner, Qt::ArrowType arrow,
                const QString& settings);
    // The owner's rectangle, lengthened downwards by offset; the owner gets the focus look while open.
    void snapToParent(CTavoWidget* widget, SnapLocation fromCorner, SnapLocation toCorner, Qt::ArrowType arrow,
                      const QString& settings, unsigned int offset);
    QRect snappedToRect() const { return m_snapRect; }

    void setShowInfoBanner(bool show);
    void setIsOnHomeScreen(bool onHome);
    void setDefaultFocus();
    void pickItem(int delta);
    // digit 0 stands for the tenth row; type is the key event's type.
    void performQuickAccess(int digit, QEvent::Type type);
    int numOfVisibleItems() const;
    int lastNonGroupDivIndex() const;
    // The index of the n-th row that is not a divider, counted from 1; -1 if none.
    int convertItemToIndex(int n) const;
    void reportEvent();

    QString getContextSensitiveInformation() override;
    QRect rectOfChildOnScreen(const CTavoWidget* child) const override;
    bool isOnTopAt(CTavoWidget* child, const QPoint& point) const override;
    void layout() override;

    QPoint scrollOffset() const override { return m_scrollOffset; }
    void setScrollOffset(const QPoint& offset) override;
    void zeroUnusedComponent(QPoint& p) override { p.setX(0); }
    void cancelPress() override;

    bool isOpen() const { return m_isOpen; }
    int focusedIndex() const { return m_focusedIndex; }
    int keyIndex() const { return m_keyIndex; }
    void setKeyIndex(int index) { m_keyIndex = index; }
    bool isMoreEnabled() const { return m_moreEnabled; }
    int groupSize() const { return m_groupSize; }
    bool isOnHome() const { return m_isOnHome; }
    bool showsInfoBanner() const { return m_showInfoBanner; }
    bool isSideBySide() const { return m_sideBySide; }
    bool needsRefresh() const { return m_needsRefresh; }
    void setNeedsRefresh() { m_needsRefresh = true; }
    void setRestoreFocus(bool on) { m_restoreFocus = on; }
    void setFocusOnParent(bool on) { m_focusOnParent = on; }
    int itemGap() const { return m_itemGap; }
    int itemsOffsetY() const { return m_itemsOffsetY; }
    int itemsMaximum() const { return m_itemsMaximum; }
    int spaceBelow() const { return m_spaceBelow; }
    int flyinTimeout() const;
    bool isFlyinTimerActive() const;
    Qt::ArrowType arrow() const { return m_arrow; }
    CTavoWidget* snapParent() const { return m_parentWidget; }
    const QString& snapSettings() const { return m_snapSettings; }
    const CTXMLFlyoutCluster& cluster() const { return m_cluster; }
    const QVector<CTavoFlyoutItem*>& items() const { return m_items; }
    CTavoFlyoutItem* item(int index) const { return m_items.value(index); }
    const QVector<int>& itemPositions() const { return m_itemPositions; }
    CTavoParagraph* banner() const { return m_banner; }
    QParallelAnimationGroup* animationGroup() const { return m_animationGroup; }

signals:
    void opened();
    void closed();

public slots:
    void onTimeout();

public:
    // Part of the cluster's interface: owners feed it events and paint it directly.
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    // Steps of init after the content is stored: rows, geometry, report, banner, scrolling.
    void refresh(bool report);
    void fillItems(int count);
    void placeItems(int count);
    int contentHeight(int count) const;
    int availableHeight() const;
    void updateBanner();
    void updateScrollLimits();
    void onMousePress(QMouseEvent* event);
    void onMouseRelease(QMouseEvent* event);
    bool handleKey(QKeyEvent* event);
    // The chosen row: report it and close, or open the next page of a "More".
    void selectFocused();
    int itemIndexAt(const QPoint& point) const;
    int leftMargin() const;
    QSize screenSize() const;
    void ensureVisible(int index);

    QParallelAnimationGroup* m_animationGroup;
    QVector<CTavoFlyoutItem*> m_items;
    CTXMLFlyoutCluster m_cluster;
    bool m_needsRefresh;
    QVector<int> m_itemPositions;
    int m_itemGap;
    bool m_isOpen;
    int m_focusedIndex;
    bool m_restoreFocus;
    bool m_focusOnParent;
    QPointer<QWidget> m_previousFocus;
    bool m_sideBySide;
    int m_keyIndex;
    int m_groupSize;
    bool m_moreEnabled;
    QColor m_borderColor;
    int m_itemsOffsetY;
    int m_itemsMaximum;
    int m_spaceBelow;
    bool m_showInfoBanner;
    bool m_isOnHome;
    int m_menuTranslate;
    QPointer<CTavoWidget> m_parentWidget;
    QString m_snapSettings;
    QRect m_snapRect;
    CTavoParagraph* m_banner;
    QTimer* m_flyinTimer;
    bool m_snapToTop;
    bool m_reportNetworkUnavailable;
    bool m_showIsOnHome;
    bool m_showDimLayer;

    // Taken from the style in layout(), so that painting only uses them.
    bool m_invertTextWhenFocused;
    int m_borderOutlineWidth;
    QPen m_borderPen;
    int m_styleItemsOffsetY;
    Qt::ArrowType m_arrow;
    QPoint m_scrollOffset;
    int m_shownCount;
    int m_leftMargin;
};
