#pragma once
#include "tgui_export.h"
// One style block: the typed declarations of one selector. A declaration's type
// follows from its name (exact or suffix match on the attribute table); values
// are converted once, at load, and scaled from the design resolution there.
#include <QBrush>
#include <QColor>
#include <QFont>
#include <QMap>
#include <QPen>
#include <QPoint>
#include <QPolygon>
#include <QRect>
#include <QSharedPointer>
#include <QSize>
#include <QString>
#include <QUrl>
#include <QVariant>
#include <QVector>

#include "layout/CTavoVarList.h"
#include "style/CTavoImage.h"

class QGraphicsEffect;
class QObject;
class QPainter;
class QPropertyAnimation;
class QWidget;

enum TavoWidgetStyleAttributeNames
{
    TavoStyleColor = 0,
    TavoStyleFont,
    TavoStyleSize,
    TavoStyleBorderRadius,
    TavoStyleBorderColor,
    TavoStyleBorderWidth,
    TavoStyleBorder,
    TavoStyleLocation,
    TavoStyleTextAlign,
    TavoStyleTextwrap,
    TavoStylePadding,
    TavoStyleMargin,
    TavoStyleSizeMinimum,
    TavoStyleSizeMaximum,
    TavoStyleBackgroundPressed,
    TavoStyleBackgroundFocused,
    TavoStyleBackgroundImage,
    TavoStyleBackgroundPressedImage,
    TavoStyleBackgroundPosition,
    TavoStyleBackgroundFocusedImage,
    TavoStyleBackgroundFocusedPressedImage,
    TavoStyleRenderQuality,
    TavoStyleImage,
    TavoStyleShape,
    TavoStylePosition,
    TavoStyleAlign,
    TavoStyleBackground,
    TavoStyleWindowIcon,
    TavoStyleAnimation,
    TavoStyleGeometry,
    TavoStylePos,
    TavoStyleScrollPosition,
    TavoStyleDuration,
    TavoStyleAlpha,
    TavoStyleLayoutDirection,
    TavoStyleLayoutType,
    TavoStyleDefaultPhoto,
    TavoStyleScaleRatio,
    TavoStyleOpacity,
    TavoStyleVideoOverlayPos,
    TavoStyleSource,
    TavoStyleAttributeCount
};

class TGUI_EXPORT CTavoWidgetStyle
{
public:
    CTavoWidgetStyle();

    // Raw access; a static invalid variant for a missing name.
    const QVariant& get(const QString& name) const;
    const QVariant& get(const char* name) const;

    // Defaulting getters: the default when the name is missing or not convertible;
    // found, when given, says whether the name is present.
    unsigned UInt(const QString& name, unsigned def = 0, bool* found = nullptr) const;
    int Int(const QString& name, int def = 0, bool* found = nullptr) const;
    QSize Size(const QString& name, const QSize& def = QSize(), bool* found = nullptr) const;
    QPoint Location(const QString& name, const QPoint& def = QPoint(), bool* found = nullptr) const;
    QColor Color(const QString& name, const QColor& def = QColor(), bool* found = nullptr) const;
    QFont Font(const QString& name, const QFont& def = QFont(), bool* found = nullptr) const;
    QString String(const QString& name, const QString& def = QString(), bool* found = nullptr) const;
    unsigned Enum(const QString& name, unsigned def = 0, bool* found = nullptr) const;
    QRect BoxLength(const QString& name, const QRect& def = QRect(), bool* found = nullptr) const;
    bool Bool(const QString& name, bool def = false, bool* found = nullptr) const;
    QUrl Url(const QString& name, const QUrl& def = QUrl(), bool* found = nullptr) const;
    QPen Pen(const QString& name, const QPen& def = QPen(), bool* found = nullptr) const;
    QBrush Brush(const QString& name, const QBrush& def = QBrush(), bool* found = nullptr) const;
    QBrush* BrushPtr(const QString& name, QBrush* def = nullptr, bool* found = nullptr) const;
    CTavoImage Image(const QString& name, const CTavoImage& def = CTavoImage(), bool* found = nullptr) const;
    // A non-null target is bound to the animation: one animation serves one widget at a time.
    QPropertyAnimation* AnimationPtr(const QString& name, QObject* target = nullptr, bool* found = nullptr) const;

    bool isValid() const;
    QRect contentRect(const QRect& rect) const;
    QRect borderRect(const QRect& rect) const;
    // Bits: 1 font, 2 colour, 4 alignment, 8 wrap found.
    unsigned getLabelStyle(QFont& font, QColor& color, unsigned& flags) const;
    void alignRect(const QString& name, const QRect& outer, QRect& inner, QPoint offset = QPoint()) const;
    void setGeometry(QWidget* widget, const QRect& rect) const;
    void paintBox(QPainter* painter, int x, int y, int w, int h) const;
    void paintBox(QPainter* painter, const QRect& rect) const;
    QGraphicsEffect* GraphicsEffect(const QString& name, QObject* parent) const;

    // Parses a declaration list, replacing the content.
    void set(const QString& text);
    void set(const QStringRef& text);
    // Copies every entry of other over this block's.
    void update(const CTavoWidgetStyle& other);
    // The same; an empty block takes other's entries over instead of copying them.
    void update(CTavoWidgetStyle&& other);
    void resetContent();

    const QMap<QString, QVariant>& properties() const { return m_properties; }
    const QMap<QString, QBrush*>& brushes() const { return m_brushes; }
    const QMap<QString, CTavoImage>& images() const { return m_images; }
    const QMap<QString, QPropertyAnimation*>& animations() const { return m_animations; }

    // The value grammar.
    static int getType(const QString& name);
    static QVariant parseAttribute(const QString& name, const QString& value, int& type);
    static QColor getColor(const QString& text);
    static QFont getFont(const QString& text);
    static unsigned getUnsignedInteger(const QString& text, bool scale);
    static QSize getSize(const QString& text, bool scale);
    static QPoint getLocation(const QString& text);
    static QPolygon getPolygon(const QString& text);
    static bool getBool(const QString& text);
    static QUrl getUrl(const QString& text);
    static unsigned getEnum(const QString& text, int* out = nullptr);
    static unsigned getEnumWithinRange(const QString& text, int from, int to, int* out = nullptr);
    static QRect getRect(const QString& text, bool shorthand);
    static QPen getPen(const QString& text);
    // A plain pen of `color` whose record is shared by every caller asking for
    // the same colour: screens of labels hold a few pen records, not one each.
    // GUI thread only.
    static QPen colorPen(const QColor& color);
    // The repository's brush for the text.
    static QBrush* parseBrush(const QString& text);
    static QBrush getLinearGradient(const QString& text);
    static QBrush getRadialGradient(const QString& text);
    // The repository's picture, or null; type tells what was stored.
    static void* getPixmap(const QString& text, int& type);
    QPropertyAnimation* getAnimationPtr(const QString& text);

    // Scaling from the design resolution, process-wide.
    static void setDesignScreenResolution(int designX, int designY, int maxX, int maxY);
    static QString scaleStylesheet(const QString& text);
    static bool isScaled() { return m_bIsScaled; }
    static double scaleFactorX() { return m_scaleFactorX; }
    static double scaleFactorY() { return m_scaleFactorY; }
    // Turns scaling off and the factors back to 1 (start-up state).
    static void resetScaling();

    static QString name(TavoWidgetStyleAttributeNames index);
    static int keywordCount();
    static QString keyword(int index);
    static unsigned keywordValue(int index);

private:
    QMap<QString, QVariant> m_properties;
    QMap<QString, QBrush*> m_brushes;
    QMap<QString, CTavoImage> m_images;
    QMap<QString, QPropertyAnimation*> m_animations;
    CTavoVarList m_animationArgs;
    // Blocks are copied by value through the sheet; the animations they name
    // are shared between the copies and die with the last of them.
    QVector<QSharedPointer<QPropertyAnimation>> m_animationOwners;

    static bool m_bIsScaled;
    static double m_scaleFactorX;
    static double m_scaleFactorY;
};
