#include "CZedaSoftkeyBar.h"

#include <QPropertyAnimation>

#include "CTXMLSoftkeys.h"
#include "layout/CTXMLDataConverter.h"
#include "log/GuiLog.h"
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
    m_document.clear();
    for (int i = 0; i < keys.count; ++i) {
        const CTXMLSoftkey& k = keys[i];
        if (!k.isEmpty())
            m_document.append({CTXMLDataConverter::getButtonDefFromXml(&k), k.position,
                               k.type == CTXMLSoftkey::SoftkeyContextSensitive});
    }
    return place();
}

void CZedaSoftkeyBar::onCtxSensitiveSkReq(QString url, QString data, int value)
{
    guiLog(0, "context sensitive sk %s [%s] %s", qPrintable(url), qPrintable(data),
           value == 1 ? "show" : value == 0 ? "hide" : "disable");
    const bool known = m_ctxKeys.contains(url);
    if (value == 0 && known)
        m_ctxKeys.remove(url);
    else if (value != 0 && (!known || m_ctxKeys.value(url) != data))
        m_ctxKeys.insert(url, data);
    else
        return;
    for (const KeyT& k : qAsConst(m_document)) {
        if (k.contextual && k.settings.m_clickUrl == url) {
            place();
            return;
        }
    }
}

QStringList CZedaSoftkeyBar::place()
{
    const KeyT* placed[KeyCount] = {};
    QList<const KeyT*> loose;
    for (const KeyT& k : qAsConst(m_document)) {
        if (k.contextual && !m_ctxKeys.contains(k.settings.m_clickUrl))
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
        const KeyT* k = placed[i];
        if (!k) {
            // Blank first: a hidden button's labels are painted on their own.
            TavoButtonSettings blank;
            blank.m_name = button->objectName();
            if (button->isNewDefinition(blank))
                button->init(&blank, QString(), i, true);
            button->setVisible(false);
            continue;
        }
        TavoButtonSettings settings = k->settings;
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
