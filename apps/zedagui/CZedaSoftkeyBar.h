#pragma once
// The row of softkeys along the bottom edge: four keys styled by the skin item
// "softkeys", labelled and addressed by the softkey documents of the core.
#include <QList>
#include <QString>

#include "layout/CTavoLayoutWidget.h"

class CTXMLSoftkeys;
class CTavoButton;

class CZedaSoftkeyBar : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    enum { KeyCount = 4 };

    explicit CZedaSoftkeyBar(QWidget* parent);

    void applySkin(const QString& style, const QString& attributes);
    // Keys with a position 0..3 take that place, the others fill the free ones in
    // document order; places left over are hidden. Returns the labels shown.
    QStringList setKeys(const CTXMLSoftkeys& keys);
    CTavoButton* key(int index) const { return m_keys.value(index); }

private:
    QList<CTavoButton*> m_keys;
};
