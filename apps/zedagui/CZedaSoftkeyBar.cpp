#include "CZedaSoftkeyBar.h"

#include <QPropertyAnimation>

#include "CTXMLSoftkeys.h"
#include "layout/CTXMLDataConverter.h"
#include "widgets/CTavoButton.h"
#include "widgets/TavoButtonSettings.h"

CZedaSoftkeyBar::CZedaSoftkeyBar(QWidget* parent)
    : CTavoLayoutWidget(parent)
{
    setObjectName(QStringLiteral("softkeys"));
    for (int i = 0; i < KeyCount; ++i) {
        TavoButtonSettings settings;
        auto* key = new CTavoButton(&settings, this);
        key->setObjectName(QStringLiteral("softkey-%1").arg(i + 1));
        key->setVisible(false);
        connect(key, &CTavoButton::buttonClicked, this,
                [this](QString url, QString data) { onWidgetEvent(url, data); });
        m_keys.append(key);
    }
}

void CZedaSoftkeyBar::applySkin(const QString& style, const QString& attributes)
{
    QString s = style;
    QString a = attributes;
    updateStyle(s, a, true);
}

QStringList CZedaSoftkeyBar::setKeys(const CTXMLSoftkeys& keys)
{
    const CTXMLSoftkey* placed[KeyCount] = {};
    QList<const CTXMLSoftkey*> loose;
    for (int i = 0; i < keys.count; ++i) {
        const CTXMLSoftkey& k = keys[i];
        if (k.isEmpty())
            continue;
        if (k.position >= 0 && k.position < KeyCount && !placed[k.position])
            placed[k.position] = &k;
        else
            loose.append(&k);
    }
    for (int i = 0; i < KeyCount && !loose.isEmpty(); ++i) {
        if (!placed[i])
            placed[i] = loose.takeFirst();
    }

    QStringList labels;
    for (int i = 0; i < KeyCount; ++i) {
        CTavoButton* button = m_keys.at(i);
        const CTXMLSoftkey* k = placed[i];
        if (!k) {
            button->setVisible(false);
            continue;
        }
        TavoButtonSettings settings = CTXMLDataConverter::getButtonDefFromXml(k);
        settings.m_name = button->objectName();
        // An unchanged key keeps its look and state. A replaced key that is not
        // held drops the fading press of the key it replaces: that press
        // belonged to another function.
        if (button->isNewDefinition(settings)) {
            button->init(&settings, QString(), i, true);
            if (!button->isDown()) {
                if (QPropertyAnimation* fade = button->pressAnimation())
                    fade->stop();
                button->setPressedBackgroundOpacity(0.0f);
            }
        }
        button->setVisible(true);
        labels << settings.m_label;
    }
    update();
    return labels;
}
