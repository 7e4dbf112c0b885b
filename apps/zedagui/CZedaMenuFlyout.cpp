#include "CZedaMenuFlyout.h"

#include "log/GuiLog.h"
#include "widgets/CTavoButton.h"

CZedaMenuFlyout::CZedaMenuFlyout(QWidget* parent)
    : CTavoFlyoutCluster(parent)
{
    setObjectName(QStringLiteral("menu-flyout"));
}

void CZedaMenuFlyout::applySkin(const QString& style, const QString& attributes)
{
    QString s = style;
    QString a = attributes;
    updateStyle(s, a, true);
}

void CZedaMenuFlyout::setContent(const CTXMLFlyoutCluster& cluster, int keyIndex)
{
    CTXMLFlyoutCluster content = cluster;
    setKeyIndex(keyIndex);
    init(&content);
    guiLog(2, "zedagui: flyout of %d items for softkey %d", content.count(), keyIndex);
}

void CZedaMenuFlyout::toggleFrom(CTavoButton* key)
{
    if (isOpen())
        flyIn(true, FlyinByOwner);
    else
        openFrom(key);
}

void CZedaMenuFlyout::openFrom(CTavoButton* key)
{
    if (!key || !hasContent())
        return;
    const QWidget* bar = key->parentWidget();
    const QWidget* screen = parentWidget();
    if (!bar || !screen)
        return;
    // The key on the screen.
    const QPoint anchor = bar->mapTo(screen->window(), key->topLeft());
    const int screenWidth = screen->width();
    const int screenHeight = screen->height();
    const QString none;
    snapToParent(key, TopLeft, BottomLeft, Qt::DownArrow, none, 0);
    const bool fitsRight = anchor.x() + width() <= screenWidth;
    if (anchor.y() >= screenHeight / 2) {
        if (fitsRight)
            snapToParent(key, TopLeft, BottomLeft, Qt::UpArrow, none, 0);
        else
            snapToParent(key, TopRight, BottomRight, Qt::UpArrow, none, 0);
    } else {
        if (fitsRight)
            snapToParent(key, BottomLeft, TopLeft, Qt::DownArrow, none, 0);
        else
            snapToParent(key, BottomRight, TopRight, Qt::DownArrow, none, 0);
    }
    flyOut();
}
