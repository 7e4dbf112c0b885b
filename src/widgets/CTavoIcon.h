#pragma once
#include "tgui_export.h"
// An icon of the repository, a row of icons, a label, or an icon with a small
// label beside or over it; it can rotate (a spinner). Pixmaps belong to the
// repository: the icon only keeps pointers to them.
#include <QPixmap>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <QVector>

#include "style/CTavoIconDefinition.h"
#include "widgets/CTavoWidget.h"

class CTavoIconLabel;

class TGUI_EXPORT CTavoIcon : public CTavoWidget
{
    Q_OBJECT
    Q_PROPERTY(qreal rotationAngle READ rotationAngle WRITE setRotationAngle)

public:
    // Bits: 1 keep to the given width, 2 keep to the given height.
    typedef int SizeRestriction;
    enum { RestrictWidth = 1, RestrictHeight = 2, RestrictBoth = 3 };
    // 0 icon and label, 1 icon and label as text, 2 nothing, 3 icon only, 4 label only.
    enum DisplayModeT { IconAndLabel = 0, IconAndTextLabel = 1, ShowNothing = 2, IconOnly = 3, LabelOnly = 4 };

    explicit CTavoIcon(QWidget* parent = nullptr, int x = 0, int y = 0, int w = 0, int h = 0);
    ~CTavoIcon() override;

    // A size of -1 does not restrict. Returns at once for an unchanged definition and size.
    void init(const CTavoIconDefinition& definition, const QSize& size, int mode,
              SizeRestriction restriction = RestrictBoth);
    void init(const CTavoIconDefinition& definition, bool useStyleSize = true);
    void init(int primary, int pressed = -1);

    // Takes effect with the next init.
    void setState(const QString& state);
    bool is(const CTavoIconDefinition& definition) const { return m_definition == definition; }
    bool isShowingIcon(int number) const { return m_loadedIcon == number; }
    void setRotationState(bool rotating) { m_rotating = rotating; }
    void setRotationAngle(float angle);
    float rotationAngle() const { return m_rotationAngle; }
    void setInverted(bool inverted);
    void setMultiIconsInverted(bool inverted);
    int actualIconWidth() const;

    const CTavoIconDefinition& definition() const { return m_definition; }
    // The label; made on first use, so never null.
    CTavoIconLabel* label() const;
    QRect iconRect() const { return m_iconRect; }
    int iconType() const { return m_iconType; }
    int displayMode() const { return m_displayMode; }
    bool isInverted() const { return m_inverted; }
    bool isRotating() const { return m_rotating; }
    int loadedIcon() const { return m_loadedIcon; }
    // The numbers shown, as test automation knows them, joined by commas.
    QString iconIds() const;
    int loadedPressedIcon() const { return m_loadedPressedIcon; }
    int direction() const { return m_direction; }
    unsigned int overlap() const { return m_overlap; }
    QSize maxIconArea() const { return m_maxIconArea; }
    const QString& previousState() const { return m_previousState; }
    const QVector<QSize>& iconSizes() const { return m_iconSizes; }
    const QVector<QPixmap*>& pixmaps() const { return m_pixmaps; }
    const QVector<QPixmap*>& invertedPixmaps() const { return m_invertedPixmaps; }
    const QVector<QPixmap*>& pressedPixmaps() const { return m_pressedPixmaps; }
    const QVector<QPixmap*>& invertedPressedPixmaps() const { return m_invertedPressedPixmaps; }

    void move(int x, int y) override;
    bool handleEvent(QEvent::Type type, QPoint position) override;
    using CTavoObject::handleEvent;
    void paint(QPainter* painter) override;
    void layout() override;
    void reSizeAllElementsBy(float fx, float fy) override;
    void refreshDom() override;

signals:
    void clicked(QString url, QString data);

private:
    void preprocess(int mode);
    void postProcess();
    QSize initializeIconData(int number, bool pressed);
    void scaleSize(QSize size, const QSize& limit, SizeRestriction restriction);
    // Numbers that a row shows: the primary if valid, then the further numbers.
    QList<int> shownNumbers() const;
    bool holdsIcon() const;
    // Label and icon rectangle relative to the widget's corner; moved: as the
    // owner placed it, with the label's offset or location applied.
    void placeElements(bool moved);
    void reloadInto(bool inverted);
    CTavoIconLabel* ensureLabel();

    QString m_previousState;
    CTavoIconDefinition m_definition;
    CTavoIconLabel* m_label;
    QRect m_iconRect;
    int m_iconType;
    QVector<QPixmap*> m_pixmaps;
    QVector<QPixmap*> m_invertedPixmaps;
    QVector<QPixmap*> m_pressedPixmaps;
    QVector<QPixmap*> m_invertedPressedPixmaps;
    QVector<QSize> m_iconSizes;
    QSize m_maxIconArea;
    unsigned int m_overlap;
    int m_labelOffset;
    QPoint m_labelLocation;
    QSize m_labelSize;
    int m_displayMode;
    bool m_labelEnabled;
    bool m_inverted;
    bool m_overlapLabelLess;
    int m_loadedPressedIcon;
    int m_loadedIcon;
    float m_rotationAngle;
    bool m_rotating;
    bool m_lighten;
    int m_direction;
};
