#pragma once
// The flyout of a softkey. The core fills it with a flyout document whose event
// names the softkey place that owns it ("keyIndex=3"); a press on the key at
// that place opens it beside the key and a second press closes it. It takes its
// look from the skin item "flyout".
//
// Placing follows the softkey bar's rule: the flyout stands above a key in the
// lower half of the screen and below one in the upper half, with its left edge
// on the key's, or its right edge when it would not fit on the screen.
#include <QString>

#include "widgets/CTavoFlyoutCluster.h"

class CTavoButton;

class CZedaMenuFlyout : public CTavoFlyoutCluster
{
    Q_OBJECT
public:
    explicit CZedaMenuFlyout(QWidget* parent);

    void applySkin(const QString& style, const QString& attributes);
    // Content of a flyout document; keyIndex is the softkey place that opens it.
    void setContent(const CTXMLFlyoutCluster& cluster, int keyIndex);
    bool hasContent() const { return !cluster().isEmpty(); }
    // Opens beside key, or closes when it is open.
    void toggleFrom(CTavoButton* key);
    void openFrom(CTavoButton* key);
};
