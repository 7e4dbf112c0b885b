#pragma once
#include "tgui_export.h"
// A view that lays its items out in pages of columns by rows, side by side, and
// scrolls page by page: a swipe snaps to a page through KineticScroll's grid and
// the page shown is told by pageChanged(page, pages). The softkey bar's row of
// keys is one; so are the home screen's tiles.
#include "widgets/CTavoView.h"

class TGUI_EXPORT CTavoPageView : public CTavoView
{
    Q_OBJECT

public:
    explicit CTavoPageView(QWidget* parent = nullptr, int x = 0, int y = 0, int w = 0, int h = 0);
    ~CTavoPageView() override;

    using CTavoView::format;
    // Pages of the visible items; focusIndex (if not negative) is focused and its page shown.
    void format(Qt::Orientation orientation, int focusIndex);
    void scrollToPage(int page, bool animated);
    void scrollToNextPage(int delta, bool animated);
    void updateScrollControlVisibility();

    int currentPage() const { return m_currentPage; }
    int pageCount() const { return m_pageCount; }
    // As the skin gives them ("page-layout"), -1 without it; a page holds at least one of each.
    int columns() const { return m_columns; }
    int rows() const { return m_rows; }
    int itemsPerPage() const { return effectiveColumns() * effectiveRows(); }
    bool isProgrammaticScroll() const { return m_programmaticScroll; }
    int verticalGap() const { return m_verticalGap; }
    int initialScrollVelocity() const { return m_initialScrollVelocity; }
    int interPageGap() const { return m_interPageGap; }
    int maxPages() const { return m_maxPages; }
    int betweenPageGap() const { return m_betweenPageGap; }
    bool enableAutoScroll() const { return m_enableAutoScroll; }
    bool autoScaleWidgets() const { return m_autoScaleWidgets; }
    bool alignHCenter() const { return m_alignHCenter; }

    void layout() override;
    void ensureVisible(const CTavoObject* item, bool animate = true, const QRect& margins = QRect(),
                       bool clip = true) override;
    int determineNextItemDelta(int key) const override;

signals:
    void pageChanged(int page, int pages);

public slots:
    void onScrollOffsetChanged(const QPoint& offset);
    void onScrollingStopped();
    void onScrollControlled(QEvent::Type type, CTavoScrollBar::ScrollControlT control) override;

protected:
    int effectiveColumns() const { return m_columns > 0 ? m_columns : 1; }
    int effectiveRows() const { return m_rows > 0 ? m_rows : 1; }
    // The x offset that shows a page.
    int pageOffset(int page) const;

    int m_currentPage;
    int m_pageCount;
    int m_columns;
    int m_rows;
    bool m_programmaticScroll;
    int m_verticalGap;
    int m_initialScrollVelocity;
    int m_interPageGap;
    int m_maxPages;
    int m_betweenPageGap;
    bool m_enableAutoScroll;
    bool m_autoScaleWidgets;
    bool m_alignHCenter;
};
