#pragma once
#include "tgui_export.h"
// The composite most of a screen is made of: a styled box with a main label,
// an alternative label and an icon, defined by a settings record. A press is
// reported as two strings, a URL and a data word; the core decides what it means.
// The labels and the icon are QObject children of the button but paint on the
// button's surface, after the button, in the surface's pass.
#include <QColor>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>

#include "automation/CTavoUITA.h"
#include "style/CTavoImage.h"
#include "widgets/CTavoWidget.h"
#include "widgets/TavoButtonSettings.h"

class CTavoIcon;
class CTavoLabelWidget;
class CTavoWidgetStyle;

class TGUI_EXPORT CTavoButton : public CTavoWidget
{
    Q_OBJECT

public:
    explicit CTavoButton(QWidget* parent = nullptr);
    CTavoButton(TavoButtonSettings* settings, QWidget* parent);
    ~CTavoButton() override;

    // Stores the record (a null record is refused), fills labels and icon and, with doLayout, lays out.
    // data is what a click reports; index is the caller's position for the button (-1 none).
    void init(TavoButtonSettings* settings, const QString& data = QString(), int index = -1, bool doLayout = true);
    bool isNewDefinition(const TavoButtonSettings& settings) const { return settings != m_settings; }
    void setPriority(ItemPriorityT priority);
    void changePriority(ItemPriorityT priority);
    void setIcon(int number);
    void setLabel();
    void setLabel(const QString& label);
    void setAltLabel(const QString& label);
    void enableMainLabel();
    void disableMainLabel();
    QString label() const { return m_settings.m_label; }
    QString altText() const { return m_settings.m_auxText; }
    QString name() const { return m_settings.m_name; }
    // 1 the press URL, 2 the hold URL, anything else the click URL.
    QString url(int which = 0) const;
    bool useAlternativeBackground() const { return m_settings.m_buttonType == 4; }

    // Hooks for buttons with an indicator; nothing here.
    virtual void setLedIndicator(const QColor& color);
    virtual void setLedIndicator(const QColor& color, int cadence);
    virtual bool isCadenceStarted() const { return false; }
    virtual void setReferenceTime(int milliseconds);
    virtual int getCadenceTime() const { return 0; }

    const TavoButtonSettings& settings() const { return m_settings; }
    const QString& data() const { return m_data; }
    int index() const { return m_index; }
    ItemPriorityT priority() const { return m_priority; }
    QRect backgroundRect() const { return m_backgroundRect; }
    QPoint iconOffset() const { return m_iconOffset; }
    bool holdFired() const { return m_holdFired; }
    const QString& imageName() const { return m_imgName; }
    CTavoIcon* icon() const { return m_icon; }
    CTavoLabelWidget* labelWidget() const { return m_labelWidget; }
    // The alternative label; made on first use, so never null.
    CTavoLabelWidget* altLabelWidget() const;
    const CTavoImage& altImage() const { return m_altImage; }
    const CTavoImage& altFocusedImage() const { return m_altFocusedImage; }
    const CTavoImage& disabledBackgroundImage() const { return m_disabledBackgroundImage; }

    // The platform's click sound; none by default. Icons play it too.
    typedef void (*ClickSoundFn)();
    static void setClickSound(ClickSoundFn sound);
    static void playClickSound();

    virtual QString text() const;
    virtual void onHoldTimeout();

    void setFocused(bool focused) override;
    void move(int x, int y) override;
    bool handleEvent(QEvent::Type type, QPoint position) override;
    using CTavoObject::handleEvent;
    void setDown(bool down) override;
    void paint(QPainter* painter) override;
    void layout() override;
    void repositionAllElements(int dx, int dy) override;
    void reSizeAllElementsBy(float fx, float fy) override;
    void refreshDom() override;

    // What the report tells of the button beyond the base attributes, in order:
    // label, alt-label, action-released, action-pressed, action-held, icon-ids by default.
    const QList<UITA::TavoUITANames>& reportList() const { return m_reportList; }
    void setReportList(const QList<UITA::TavoUITANames>& names) { m_reportList = names; }

signals:
    void buttonClicked(QString url, QString data);
    void labelChanged(QString url, QString label, int position);

public slots:
    virtual void onBaseTimerTimeout(int baseTimeout);
    virtual void enable();

protected:
    virtual void clicked(bool pressed);
    // Emits the click; context-sensitive softkeys choose another URL or data here.
    virtual void processCtxSensitiveSk();
    virtual void placeLed(CTavoWidgetStyle* style);
    void initObjectMetaData();
    void applyLabelAttributes(CTavoWidgetStyle* style);
    void placeBackground(CTavoWidgetStyle* style, bool applySize);
    void placeLabels(CTavoWidgetStyle* style);
    void placeIcon(CTavoWidgetStyle* style);
    void alignIcon();

    TavoButtonSettings m_settings;
    ItemPriorityT m_priority;
    QRect m_backgroundRect;
    QPoint m_iconOffset;
    bool m_holdFired;
    QPoint m_backgroundLocation;
    QSize m_backgroundSize;
    bool m_disableAltLabel;
    bool m_disableLabel;
    bool m_disableIcon;
    bool m_invertWhenFocused;
    bool m_invertAlways;
    bool m_invertTextWhenFocused;
    QString m_imgName;
    CTavoIcon* m_icon;
    CTavoLabelWidget* m_altLabelWidget;  // null until used: altLabelWidget() makes it
    CTavoLabelWidget* m_labelWidget;
    CTavoImage m_altFocusedImage;
    CTavoImage m_altImage;
    CTavoImage m_disabledBackgroundImage;
    QString m_data;
    int m_index;
    QList<UITA::TavoUITANames> m_reportList;

private:
    CTavoLabelWidget* ensureAltLabel();
    void placeLabel(CTavoWidgetStyle* style, CTavoLabelWidget* label, const QString& prefix, bool disabled,
                    bool fillContent);
};
