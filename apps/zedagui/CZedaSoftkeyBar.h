#pragma once
// The row of softkeys along the bottom edge: four keys styled by the skin item
// "softkeys", labelled and addressed by the softkey documents of the core.
// Context sensitive keys (type 2) take a place only while a text field asks
// for them through onCtxSensitiveSkReq.
#include <QList>
#include <QMap>
#include <QString>

#include "widgets/TavoButtonSettings.h"

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

public slots:
    // Show (1), hide (0) or dim (2, shown here) the context key with this URL.
    void onCtxSensitiveSkReq(QString url, QString data, int value);

private:
    struct KeyT
    {
        TavoButtonSettings settings;
        int position;
        bool contextual;
    };
    QStringList place();

    QList<CTavoButton*> m_keys;
    QList<KeyT> m_document;           // the keys of the last softkey document
    QMap<QString, QString> m_ctxKeys;  // context keys asked for: URL to data
};
