#include "style/CTavoWidgetStyle.h"

#include <QApplication>
#include <QFile>
#include <QGraphicsBlurEffect>
#include <QGraphicsColorizeEffect>
#include <QGraphicsDropShadowEffect>
#include <QGraphicsOpacityEffect>
#include <QGuiApplication>
#include <QHash>
#include <QLinearGradient>
#include <QPainter>
#include <QPropertyAnimation>
#include <QRadialGradient>
#include <QRegExp>
#include <QScreen>
#include <QWidget>

#include <climits>
#include <cmath>
#include <cstdio>

#include "log/GuiLog.h"
#include "style/CTavoResourceRepository.h"

bool CTavoWidgetStyle::m_bIsScaled = false;
double CTavoWidgetStyle::m_scaleFactorX = 1.0;
double CTavoWidgetStyle::m_scaleFactorY = 1.0;

namespace {
// Names whose type getType remembers at most.
constexpr int kTypeMemoLimit = 1024;


struct AttributeRowT
{
    const char* name;
    int type;
};

const AttributeRowT s_attributes[TavoStyleAttributeCount] = {
    {"color", QMetaType::QColor},
    {"font", QMetaType::QFont},
    {"size", QMetaType::QSize},
    {"border-radius", QMetaType::UInt},
    {"border-color", QMetaType::QColor},
    {"border-width", QMetaType::QRect},
    {"border", QMetaType::QPen},
    {"location", QMetaType::QPoint},
    {"text-align", TavoKeywordType},
    {"textwrap", TavoKeywordType},
    {"padding", QMetaType::QRect},
    {"margin", QMetaType::QRect},
    {"size-minimum", QMetaType::QSize},
    {"size-maximum", QMetaType::QSize},
    {"background-pressed", QMetaType::QBrush},
    {"background-focused", QMetaType::QBrush},
    {"background-image", QMetaType::QPixmap},
    {"background-pressed-image", QMetaType::QPixmap},
    {"background-position", TavoKeywordType},
    {"background-focused-image", QMetaType::QPixmap},
    {"background-focused-pressed-image", QMetaType::QPixmap},
    {"render-quality", TavoKeywordType},
    {"image", QMetaType::QPixmap},
    {"shape", QMetaType::QPolygon},
    {"position", QMetaType::QPoint},
    {"align", TavoKeywordType},
    {"background", QMetaType::QBrush},
    {"windowIcon", QMetaType::QPixmap},
    {"animation", TavoAnimationType},
    {"geometry", QMetaType::QRect},
    {"pos", QMetaType::QPoint},
    {"scrollPosition", QMetaType::UInt},
    {"duration", QMetaType::UInt},
    {"alpha", QMetaType::UInt},
    {"layout-direction", TavoKeywordType},
    {"layout-type", TavoKeywordType},
    {"default-photo", QMetaType::QPixmap},
    {"scaleRatio", QMetaType::Double},
    {"opacity", QMetaType::Double},
    {"videoOverlayPos", QMetaType::QPoint},
    {"source", QMetaType::QUrl},
};

struct KeywordRowT
{
    const char* keyword;
    unsigned value;
};

const KeywordRowT s_keywords[] = {
    {"center", 132},      {"hcenter", 4},         {"vcenter", 128},   {"hcentertop", 36},
    {"left", 1},          {"right", 2},           {"top", 32},        {"bottom", 64},
    {"nowrap", 256},      {"wordwrap", 4096},     {"anywhere", 8192}, {"wordwrap-or-anywhere", 12288},
    {"light", 25},        {"normal", 50},         {"demiBold", 63},   {"bold", 75},
    {"black", 87},        {"solid", 1},           {"dash", 2},        {"dot", 3},
    {"dashdot", 4},       {"dashdotdot", 5},      {"flatcap", 0},     {"squarecap", 16},
    {"roundcap", 32},     {"miterjoin", 0},       {"beveljoin", 64},  {"roundjoin", 128},
    {"maxq", 0},          {"highq", 1},           {"normalq", 2},     {"lowq", 3},
    {"right-to-left", 0}, {"left-to-right", 1},   {"top-to-bottom", 2}, {"bottom-to-top", 3},
    {"vertical", 0},      {"horizontal", 1},      {"linear", 0},      {"quad", 1},
    {"cubic", 5},         {"quart", 9},           {"quint", 13},      {"sine", 17},
    {"expo", 21},         {"circ", 25},           {"elastic", 29},    {"back", 33},
    {"bounce", 37},       {"curve", 41},          {"sine", 43},       {"cosine", 44},
    {"inout-", 2},        {"outin-", 3},          {"in-", 0},         {"out-", 1},
};
const int s_keywordCount = int(sizeof(s_keywords) / sizeof(s_keywords[0]));

// Keyword rows that the pen and the easing curve read.
const int PenRowFirst = 17, PenRowLast = 27;
const int CurveRowFirst = 37, CurveRowLast = 51;
const int CurveModifierFirst = 51, CurveModifierLast = 55;
const unsigned CurveLimit = 46;

QString keywordText(int row)
{
    return QString::fromLatin1(s_keywords[row].keyword);
}

// Skins are data: a factor or a number out of range must clamp, never overflow.
int clampToInt(double v)
{
    if (!(v == v))
        return 0;
    if (v >= double(INT_MAX))
        return INT_MAX;
    if (v <= double(INT_MIN))
        return INT_MIN;
    return int(v);
}

int scaleRounded(int v, double factor)
{
    const double d = double(v) * factor;
    return clampToInt(d >= 0.0 ? d + 0.5 : d - 0.5);
}

unsigned scaleTruncatedUnsigned(unsigned v, double factor)
{
    const double d = double(v) * factor;
    if (!(d == d) || d <= 0.0)
        return 0;
    if (d >= double(UINT_MAX))
        return UINT_MAX;
    return unsigned(d);
}

// No screen has more pixels than this along a side; bounding every length keeps
// rectangle arithmetic (right = x + width - 1, sums of boxes) inside int.
const int MaxPixels = 1 << 24;

int clampPixels(int v)
{
    return qBound(-MaxPixels, v, MaxPixels);
}

double meanFactor(double fx, double fy)
{
    return (fx + fy) * 0.5;
}

float finiteOrZero(float v)
{
    return std::isfinite(v) ? v : 0.0f;
}

QStringList splitBlanks(const QString& text)
{
    return text.split(QRegExp(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
}

bool isIntegral(const QVariant& v)
{
    switch (int(v.type())) {
    case QMetaType::UInt:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

bool isText(const QVariant& v)
{
    return int(v.type()) == QMetaType::QString;
}

} // namespace

CTavoWidgetStyle::CTavoWidgetStyle() : m_animationArgs(QString(), QStringLiteral(",")) {}

// ---- reading ----

const QVariant& CTavoWidgetStyle::get(const QString& name) const
{
    static const QVariant invalid;
    auto it = m_properties.constFind(name);
    return it == m_properties.constEnd() ? invalid : it.value();
}

const QVariant& CTavoWidgetStyle::get(const char* name) const
{
    return get(QString::fromUtf8(name));
}

#define TAVO_STYLE_LOOKUP(def)                                                                     \
    auto it = m_properties.constFind(name);                                                        \
    if (found)                                                                                     \
        *found = it != m_properties.constEnd();                                                    \
    if (it == m_properties.constEnd())                                                             \
        return def;                                                                                \
    const QVariant& v = it.value();

unsigned CTavoWidgetStyle::UInt(const QString& name, unsigned def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (isIntegral(v))
        return v.toUInt();
    if (isText(v))
        return getUnsignedInteger(v.toString(), true);
    return def;
}

int CTavoWidgetStyle::Int(const QString& name, int def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (isIntegral(v))
        return v.toInt();
    if (isText(v)) {
        const QString text = v.toString();
        const int value = int(getUnsignedInteger(text, true));
        return text.contains(QLatin1Char('-')) ? -value : value;
    }
    return def;
}

QSize CTavoWidgetStyle::Size(const QString& name, const QSize& def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (int(v.type()) == QMetaType::QSize)
        return v.toSize();
    if (isText(v))
        return getSize(v.toString(), !name.contains(QLatin1String("layout")));
    return def;
}

QPoint CTavoWidgetStyle::Location(const QString& name, const QPoint& def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (int(v.type()) == QMetaType::QPoint)
        return v.toPoint();
    if (isText(v))
        return getLocation(v.toString());
    return def;
}

QColor CTavoWidgetStyle::Color(const QString& name, const QColor& def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (int(v.type()) == QMetaType::QColor)
        return v.value<QColor>();
    if (isText(v))
        return getColor(v.toString());
    return def;
}

QFont CTavoWidgetStyle::Font(const QString& name, const QFont& def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (int(v.type()) == QMetaType::QFont)
        return v.value<QFont>();
    if (isText(v))
        return getFont(v.toString());
    return def;
}

QString CTavoWidgetStyle::String(const QString& name, const QString& def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (v.canConvert<QString>())
        return v.toString();
    return def;
}

unsigned CTavoWidgetStyle::Enum(const QString& name, unsigned def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (isIntegral(v))
        return v.toUInt();
    if (isText(v))
        return getEnum(v.toString());
    return def;
}

QRect CTavoWidgetStyle::BoxLength(const QString& name, const QRect& def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (int(v.type()) == QMetaType::QRect)
        return v.toRect();
    if (isText(v))
        return getRect(v.toString(), true);
    return def;
}

bool CTavoWidgetStyle::Bool(const QString& name, bool def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (int(v.type()) == QMetaType::Bool)
        return v.toBool();
    if (isText(v))
        return getBool(v.toString());
    return def;
}

QUrl CTavoWidgetStyle::Url(const QString& name, const QUrl& def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (int(v.type()) == QMetaType::QUrl)
        return v.toUrl();
    if (isText(v))
        return getUrl(v.toString());
    return def;
}

QPen CTavoWidgetStyle::Pen(const QString& name, const QPen& def, bool* found) const
{
    TAVO_STYLE_LOOKUP(def)
    if (int(v.type()) == QMetaType::QPen)
        return v.value<QPen>();
    if (int(v.type()) == QMetaType::QColor)
        return colorPen(v.value<QColor>());
    if (isText(v))
        return getPen(v.toString());
    return def;
}

#undef TAVO_STYLE_LOOKUP

QBrush CTavoWidgetStyle::Brush(const QString& name, const QBrush& def, bool* found) const
{
    QBrush* brush = BrushPtr(name, nullptr, found);
    return brush ? *brush : def;
}

QBrush* CTavoWidgetStyle::BrushPtr(const QString& name, QBrush* def, bool* found) const
{
    auto it = m_brushes.constFind(name);
    if (found)
        *found = it != m_brushes.constEnd();
    if (it == m_brushes.constEnd() || !it.value())
        return def;
    return it.value();
}

CTavoImage CTavoWidgetStyle::Image(const QString& name, const CTavoImage& def, bool* found) const
{
    auto it = m_images.constFind(name);
    if (found)
        *found = it != m_images.constEnd();
    return it == m_images.constEnd() ? def : it.value();
}

QPropertyAnimation* CTavoWidgetStyle::AnimationPtr(const QString& name, QObject* target, bool* found) const
{
    auto it = m_animations.constFind(name);
    if (found)
        *found = it != m_animations.constEnd();
    if (it == m_animations.constEnd())
        return nullptr;
    QPropertyAnimation* animation = it.value();
    if (animation && target && animation->targetObject() != target) {
        // Qt refuses to retarget a running animation; the new owner takes it over.
        if (animation->state() != QAbstractAnimation::Stopped)
            animation->stop();
        animation->setTargetObject(target);
    }
    return animation;
}

// ---- derived ----

bool CTavoWidgetStyle::isValid() const
{
    return !m_properties.isEmpty();
}

QRect CTavoWidgetStyle::contentRect(const QRect& rect) const
{
    // Box lengths: x top, y right, width bottom, height left.
    qint64 top = 0, right = 0, bottom = 0, left = 0;
    for (const char* box : {"margin", "border-width", "padding"}) {
        const QRect b = BoxLength(QString::fromLatin1(box));
        top += b.x();
        right += b.y();
        bottom += b.width();
        left += b.height();
    }
    return QRect(clampPixels(clampToInt(double(rect.left() + left))), clampPixels(clampToInt(double(rect.top() + top))),
                 clampPixels(clampToInt(double(rect.width() - left - right))),
                 clampPixels(clampToInt(double(rect.height() - top - bottom))));
}

QRect CTavoWidgetStyle::borderRect(const QRect& rect) const
{
    const QRect b = BoxLength(QStringLiteral("margin"));
    const qint64 top = b.x(), right = b.y(), bottom = b.width(), left = b.height();
    return QRect(clampPixels(clampToInt(double(rect.left() + left))), clampPixels(clampToInt(double(rect.top() + top))),
                 clampPixels(clampToInt(double(rect.width() - left - right))),
                 clampPixels(clampToInt(double(rect.height() - top - bottom))));
}

unsigned CTavoWidgetStyle::getLabelStyle(QFont& font, QColor& color, unsigned& flags) const
{
    unsigned foundBits = 0;
    bool has = false;
    const QFont f = Font(QStringLiteral("font"), font, &has);
    if (has) {
        font = f;
        foundBits |= 1;
    }
    const QColor c = Color(QStringLiteral("color"), color, &has);
    if (has) {
        color = c;
        foundBits |= 2;
    }
    const unsigned align = Enum(QStringLiteral("text-align"), 1, &has);
    if (has)
        foundBits |= 4;
    const unsigned wrap = Enum(QStringLiteral("textwrap"), 4096, &has);
    if (has)
        foundBits |= 8;
    flags = align | wrap;
    return foundBits;
}

void CTavoWidgetStyle::alignRect(const QString& name, const QRect& outer, QRect& inner, QPoint offset) const
{
    auto it = m_properties.constFind(name);
    if (it == m_properties.constEnd())
        return;
    bool ok = false;
    const unsigned flags = it.value().toUInt(&ok);
    if (!ok)
        return;
    int x = offset.x();
    int y = offset.y();
    const int freeWidth = outer.width() - inner.width();
    const int freeHeight = outer.height() - inner.height();
    if (flags & Qt::AlignRight)
        x += freeWidth;
    else if (flags & Qt::AlignHCenter)
        x += freeWidth / 2;
    if (flags & Qt::AlignBottom)
        y += freeHeight;
    else if (flags & Qt::AlignVCenter)
        y += freeHeight / 2;
    inner.moveTo(x, y);
}

void CTavoWidgetStyle::setGeometry(QWidget* widget, const QRect& rect) const
{
    if (!widget)
        return;
    bool has = false;
    const QSize size = Size(QStringLiteral("size"), QSize(), &has);
    if (has && size.isValid())
        widget->resize(size);
    const QPoint location = Location(QStringLiteral("location"), QPoint(), &has);
    if (!has)
        return;
    const QRect area = widget->parentWidget() ? widget->parentWidget()->rect() : rect;
    int x = location.x();
    int y = location.y();
    if (x == -1)
        x = area.x() + (area.width() - widget->width()) / 2;
    if (y < 0)
        y = area.y() + (area.height() - widget->height()) / 2;
    widget->move(x, y);
}

void CTavoWidgetStyle::paintBox(QPainter* painter, int x, int y, int w, int h) const
{
    QRect rect(x, y, w, h);
    paintBox(painter, rect);
}

void CTavoWidgetStyle::paintBox(QPainter* painter, const QRect& rect) const
{
    if (!painter)
        return;
    const QVariant& background = get(QStringLiteral("background"));
    if (int(background.type()) == QMetaType::QBrush)
        painter->fillRect(rect, background.value<QBrush>());
    Image(QStringLiteral("background-image")).paint(painter, rect);
    const QVariant& border = get(QStringLiteral("border"));
    if (int(border.type()) == QMetaType::QPen) {
        painter->setPen(border.value<QPen>());
        painter->drawRect(rect);
    }
}

QGraphicsEffect* CTavoWidgetStyle::GraphicsEffect(const QString& name, QObject* parent) const
{
    const QString text = String(name);
    if (text.isEmpty())
        return nullptr;
    const QStringList parts = text.split(QLatin1Char(','), Qt::KeepEmptyParts);
    const QString kind = parts.first().trimmed();
    QGraphicsEffect* effect = nullptr;
    if (kind.startsWith(QLatin1String("blur")))
        effect = new QGraphicsBlurEffect(parent);
    else if (kind.startsWith(QLatin1String("colorize")))
        effect = new QGraphicsColorizeEffect(parent);
    else if (kind.startsWith(QLatin1String("drop-shadow")))
        effect = new QGraphicsDropShadowEffect(parent);
    else if (kind.startsWith(QLatin1String("opacity")))
        effect = new QGraphicsOpacityEffect(parent);
    if (!effect)
        return nullptr;
    for (const QString& part : parts) {
        const QStringList pair = part.split(QLatin1Char('='));
        if (pair.size() != 2)
            continue;
        const QString property = pair.at(0).trimmed();
        if (property.isEmpty())
            continue;
        int type = 0;
        QVariant value = parseAttribute(property, pair.at(1).trimmed(), type);
        if (type == QMetaType::QBrush || type == QMetaType::QPixmap || type == QMetaType::QImage
            || type == TavoVectorImageType)
            continue; // repository pointers mean nothing to an effect
        effect->setProperty(property.toLatin1().constData(), value);
    }
    return effect;
}

// ---- filling ----

namespace {

// Names of properties as the type memo keeps them: every block shares one copy.
QHash<QString, int>& typeMemo()
{
    static QHash<QString, int> memo;
    return memo;
}

// Parsed values by their text. A skin says the same few values thousands of
// times; each is typed once and the blocks share the result. Only values whose
// parse has no lasting effect but the one the first parse had are kept: images
// (a vector path may make a new renderer each time) and animations (each block
// owns its own) are parsed every time. Brush pointers and brushes inside pens
// point into the resource repository and live until its next reset. Entries are
// found by the hash of the text, type and scaling flag, and the text is compared
// on a hit: a collision is a miss that takes the place over.
struct ValueEntryT
{
    QString text;
    int type;
    bool flag;  // a size whose name holds "layout": not scaled
    QVariant value;
};

struct ValueCacheT
{
    QHash<quint64, ValueEntryT> values;
    QHash<uint, QString> names;  // property names by hash, shared by all blocks
    bool scaled = false;
    double factorX = 1.0;
    double factorY = 1.0;
    quint64 resets = 0;
    bool fontChecked = false;
    QFont applicationFont;
};

quint64 valueKey(uint textHash, int type, bool flag)
{
    return (quint64(textHash) << 32) | (quint64(uint(type)) << 1) | (flag ? 1u : 0u);
}

ValueCacheT& valueCache()
{
    static ValueCacheT cache;
    return cache;
}

// Fonts must not outlive the application that made their engines.
void dropValueCache()
{
    ValueCacheT& cache = valueCache();
    cache.values.clear();
    cache.applicationFont = QFont();
    cache.fontChecked = false;
}

bool cacheable(int type)
{
    switch (type) {
    case QMetaType::QPixmap:
    case TavoAnimationType:
        return false;
    default:
        return true;
    }
}

const int kMaxCachedValues = 4096;

} // namespace

void CTavoWidgetStyle::set(const QString& text)
{
    set(QStringRef(&text));
}

void CTavoWidgetStyle::set(const QStringRef& text)
{
    resetContent();
    if (text.isEmpty())
        return;
    // What the values were parsed under must still hold.
    ValueCacheT& cache = valueCache();
    static QCoreApplication* dropRegisteredWith = nullptr;
    if (QCoreApplication::instance() && QCoreApplication::instance() != dropRegisteredWith) {
        qAddPostRoutine(dropValueCache);
        dropRegisteredWith = QCoreApplication::instance();
    }
    if (cache.scaled != m_bIsScaled || cache.factorX != m_scaleFactorX || cache.factorY != m_scaleFactorY
        || cache.resets != CTavoResourceRepository::resetCount()) {
        cache.values.clear();
        cache.scaled = m_bIsScaled;
        cache.factorX = m_scaleFactorX;
        cache.factorY = m_scaleFactorY;
        cache.resets = CTavoResourceRepository::resetCount();
    }
    cache.fontChecked = false;

    // Declarations are split at ";" (empty parts skipped), each at its first ":".
    const int length = text.size();
    for (int from = 0; from < length;) {
        int end = text.indexOf(QLatin1Char(';'), from);
        if (end < 0)
            end = length;
        const QStringRef part = text.mid(from, end - from);
        from = end + 1;
        const int colon = part.indexOf(QLatin1Char(':'));
        if (colon < 0)
            continue;
        const QStringRef valueText = part.mid(colon + 1).trimmed();
        if (valueText == QLatin1String("null"))
            continue;
        // The name, shared with every block that uses it.
        const QStringRef nameText = part.left(colon).trimmed();
        const uint nameHash = qHash(nameText);
        QString name;
        const auto interned = cache.names.constFind(nameHash);
        if (interned != cache.names.constEnd() && interned.value() == nameText) {
            name = interned.value();
        } else {
            name = nameText.toString();
            if (cache.names.size() >= kMaxCachedValues)
                cache.names.clear();
            cache.names.insert(nameHash, name);
        }
        QHash<QString, int>& memo = typeMemo();
        auto known = memo.constFind(name);
        if (known == memo.constEnd()) {
            getType(name);
            known = memo.constFind(name);
        }
        const int declared = known.value();
        if (declared == TavoAnimationType) {
            m_animations.insert(name, getAnimationPtr(valueText.toString()));
            continue;
        }
        int type = declared;
        QVariant parsed;
        if (cacheable(declared)) {
            if (declared == QMetaType::QFont && !cache.fontChecked) {
                // Fonts start from the application's, which a host may change.
                const QFont font = QApplication::font();
                if (!(font == cache.applicationFont) || font.family() != cache.applicationFont.family()) {
                    cache.values.clear();
                    cache.applicationFont = font;
                }
                cache.fontChecked = true;
            }
            const bool flag = declared == QMetaType::QSize && name.contains(QLatin1String("layout"));
            const quint64 key = valueKey(qHash(valueText), declared, flag);
            const auto hit = cache.values.constFind(key);
            if (hit != cache.values.constEnd() && hit->type == declared && hit->flag == flag
                && hit->text == valueText) {
                parsed = hit->value;
            } else {
                const QString value = valueText.toString();
                parsed = parseAttribute(name, value, type);
                if (cache.values.size() >= kMaxCachedValues)
                    cache.values.clear();
                cache.values.insert(key, ValueEntryT{value, declared, flag, parsed});
            }
        } else {
            parsed = parseAttribute(name, valueText.toString(), type);
        }
        switch (type) {
        case QMetaType::QPixmap:
        case QMetaType::QImage:
        case TavoVectorImageType:
            m_images.insert(name, CTavoImage(QMetaType::Type(type), parsed.value<void*>(), name));
            break;
        case QMetaType::QBrush:
            m_brushes.insert(name, static_cast<QBrush*>(parsed.value<void*>()));
            break;
        default:
            m_properties.insert(name, parsed);
            break;
        }
    }
}

void CTavoWidgetStyle::update(const CTavoWidgetStyle& other)
{
    for (auto it = other.m_properties.constBegin(); it != other.m_properties.constEnd(); ++it)
        m_properties.insert(it.key(), it.value());
    for (auto it = other.m_brushes.constBegin(); it != other.m_brushes.constEnd(); ++it)
        m_brushes.insert(it.key(), it.value());
    for (auto it = other.m_images.constBegin(); it != other.m_images.constEnd(); ++it)
        m_images.insert(it.key(), it.value());
    for (auto it = other.m_animations.constBegin(); it != other.m_animations.constEnd(); ++it)
        m_animations.insert(it.key(), it.value());
    m_animationOwners += other.m_animationOwners;
    m_animationArgs = other.m_animationArgs;
}

void CTavoWidgetStyle::update(CTavoWidgetStyle&& other)
{
    if (!m_properties.isEmpty() || !m_brushes.isEmpty() || !m_images.isEmpty() || !m_animations.isEmpty()
        || !m_animationOwners.isEmpty()) {
        update(static_cast<const CTavoWidgetStyle&>(other));
        return;
    }
    // Copying over nothing is taking over.
    m_properties.swap(other.m_properties);
    m_brushes.swap(other.m_brushes);
    m_images.swap(other.m_images);
    m_animations.swap(other.m_animations);
    m_animationOwners.swap(other.m_animationOwners);
    m_animationArgs = other.m_animationArgs;
}

void CTavoWidgetStyle::resetContent()
{
    m_properties.clear();
    m_brushes.clear();
    m_images.clear();
    m_animations.clear();
    m_animationOwners.clear();
}

// ---- the value grammar ----

int CTavoWidgetStyle::getType(const QString& name)
{
    // Skins use a few dozen names; a hostile one may use any number, so the
    // memo starts afresh rather than keep every name it was ever asked for.
    QHash<QString, int>& memo = typeMemo();
    auto hit = memo.constFind(name);
    if (hit != memo.constEnd())
        return hit.value();
    int type = 0;
    bool matched = false;
    for (const AttributeRowT& row : s_attributes) {
        if (name == QLatin1String(row.name)) {
            type = row.type;
            matched = true;
            break;
        }
    }
    if (!matched) {
        for (const AttributeRowT& row : s_attributes) {
            if (name.endsWith(QLatin1String(row.name))) {
                type = row.type;
                break;
            }
        }
    }
    if (memo.size() >= kTypeMemoLimit)
        memo.clear();
    memo.insert(name, type);
    return type;
}

QVariant CTavoWidgetStyle::parseAttribute(const QString& name, const QString& value, int& type)
{
    type = getType(name);
    switch (type) {
    case QMetaType::QFont:
        return getFont(value);
    case QMetaType::QRect:
        return getRect(value, true);
    case QMetaType::QSize:
        return getSize(value, !name.contains(QLatin1String("layout")));
    case QMetaType::QPoint:
        return getLocation(value);
    case QMetaType::UInt:
        return getUnsignedInteger(value, true);
    case QMetaType::QUrl:
        return getUrl(value);
    case QMetaType::QColor:
        return getColor(value);
    case QMetaType::QPixmap:
        return QVariant::fromValue<void*>(getPixmap(value, type));
    case QMetaType::QBrush:
        return QVariant::fromValue<void*>(parseBrush(value));
    case QMetaType::QPen:
        return getPen(value);
    case TavoKeywordType:
        return QVariant(getEnum(value));
    case QMetaType::QPolygon:
        return getPolygon(value);
    default:
        return value;
    }
}

QColor CTavoWidgetStyle::getColor(const QString& text)
{
    if (text.contains(QLatin1String("rgb"))) {
        const QByteArray bytes = text.toLatin1();
        int r = 0, g = 0, b = 0, a = 0;
        if (text.contains(QLatin1String("rgba"))) {
            sscanf(bytes.constData(), "rgba(%d, %d, %d, %d)", &r, &g, &b, &a);
        } else {
            a = 255;
            sscanf(bytes.constData(), "rgb(%d, %d, %d)", &r, &g, &b);
        }
        auto inRange = [](int c) { return c >= 0 && c <= 255; };
        if (!inRange(r) || !inRange(g) || !inRange(b) || !inRange(a))
            return QColor();
        return QColor(r, g, b, a);
    }
    if (text.contains(QLatin1String("none")))
        return QColor();
    QColor color;
    if (QColor::isValidColor(text))
        color.setNamedColor(text);
    return color;
}

QFont CTavoWidgetStyle::getFont(const QString& input)
{
    QFont font = QApplication::font();
    if (input.isEmpty())
        return font;
    QString text = input;
    unsigned weight = 50;
    for (int row = 0; row < s_keywordCount; ++row) {
        const QString word = keywordText(row);
        if (text.contains(word)) {
            weight = s_keywords[row].value;
            text.remove(word);
            break;
        }
    }
    int size = 12;
    const int px = text.indexOf(QLatin1String("px"));
    if (px >= 0)
        size = text.left(px).trimmed().toInt();
    text.remove(QLatin1Char(','));
    text.remove(QLatin1String("px"));
    text.remove(QString::number(size));
    bool italic = false;
    if (text.contains(QLatin1String("italic"))) {
        text.remove(QLatin1String("italic"));
        italic = true;
    }
    const QString family = text.trimmed();
    if (!family.isEmpty())
        font.setFamily(family);
    // Qt's weight scale stops at 99; other keyword rows only land here by accident.
    font.setWeight(int(qMin(weight, 99u)));
    font.setStyle(italic ? QFont::StyleItalic : QFont::StyleNormal);
    if (m_bIsScaled)
        size = clampToInt(double(size) * meanFactor(m_scaleFactorX, m_scaleFactorY));
    size = clampPixels(size);
    if (size > 0)
        font.setPixelSize(size);
    return font;
}

unsigned CTavoWidgetStyle::getUnsignedInteger(const QString& text, bool scale)
{
    QString digits;
    const int n = qMin(16, text.size());
    for (int i = 0; i < n; ++i) {
        const QChar c = text.at(i);
        if (c >= QLatin1Char('0') && c <= QLatin1Char('9'))
            digits.append(c);
    }
    unsigned value = digits.toUInt();
    if (scale && m_bIsScaled && text.endsWith(QLatin1String("px")))
        value = scaleTruncatedUnsigned(value, meanFactor(m_scaleFactorX, m_scaleFactorY));
    return value;
}

QSize CTavoWidgetStyle::getSize(const QString& text, bool scale)
{
    const int x = text.indexOf(QLatin1Char('x'));
    if (x < 0)
        return QSize(0, 0);
    int w = text.left(x).trimmed().toInt();
    int h = text.mid(x + 1).trimmed().toInt();
    if (scale && m_bIsScaled) {
        w = scaleRounded(w, m_scaleFactorX);
        h = scaleRounded(h, m_scaleFactorY);
    }
    return QSize(clampPixels(w), clampPixels(h));
}

QPoint CTavoWidgetStyle::getLocation(const QString& text)
{
    const int colon = text.indexOf(QLatin1Char(':'));
    if (colon < 0)
        return QPoint(0, 0);
    int x = text.left(colon).trimmed().toInt();
    int y = text.mid(colon + 1).trimmed().toInt();
    if (m_bIsScaled) {
        x = scaleRounded(x, m_scaleFactorX);
        y = scaleRounded(y, m_scaleFactorY);
    }
    return QPoint(clampPixels(x), clampPixels(y));
}

QPolygon CTavoWidgetStyle::getPolygon(const QString& text)
{
    QPolygon polygon;
    for (const QString& part : splitBlanks(text))
        polygon.append(getLocation(part));
    return polygon;
}

bool CTavoWidgetStyle::getBool(const QString& text)
{
    return text == QLatin1String("true") || text == QLatin1String("on") || text == QLatin1String("yes");
}

QUrl CTavoWidgetStyle::getUrl(const QString& input)
{
    if (!input.contains(QLatin1String("url")))
        return QUrl();
    QString text = input;
    text.remove(QLatin1String("url"));
    text.remove(QLatin1Char(')'));
    text.remove(QLatin1Char('('));
    text.remove(QLatin1Char(';'));
    return QUrl::fromLocalFile(text.trimmed());
}

unsigned CTavoWidgetStyle::getEnum(const QString& text, int* out)
{
    return getEnumWithinRange(text, 0, s_keywordCount, out);
}

unsigned CTavoWidgetStyle::getEnumWithinRange(const QString& text, int from, int to, int* out)
{
    // Both ends count; the end past the last row is the whole table.
    from = qMax(0, from);
    to = qMin(s_keywordCount - 1, to);
    unsigned value = 0;
    for (const QString& token : splitBlanks(text)) {
        for (int row = from; row <= to; ++row) {
            if (token == QLatin1String(s_keywords[row].keyword)) {
                value |= s_keywords[row].value;
                if (out)
                    *out = row;
                break;
            }
        }
    }
    return value;
}

QRect CTavoWidgetStyle::getRect(const QString& text, bool shorthand)
{
    const QStringList parts = splitBlanks(text.trimmed());
    if (parts.isEmpty())
        return QRect();
    int a[4] = {0, 0, 0, 0};
    for (int i = 0; i < 4 && i < parts.size(); ++i)
        a[i] = clampPixels(clampToInt(double(getUnsignedInteger(parts.at(i), false))));
    if (shorthand) {
        if (a[2] == 0)
            a[2] = a[0];
        if (a[1] == 0)
            a[1] = a[0];
        if (a[3] == 0)
            a[3] = a[1];
    }
    if (m_bIsScaled) {
        a[0] = scaleRounded(a[0], m_scaleFactorX);
        a[2] = scaleRounded(a[2], m_scaleFactorX);
        a[1] = scaleRounded(a[1], m_scaleFactorY);
        a[3] = scaleRounded(a[3], m_scaleFactorY);
        for (int& v : a)
            v = clampPixels(v);
    }
    return QRect(a[0], a[1], a[2], a[3]);
}

QPen CTavoWidgetStyle::colorPen(const QColor& color)
{
    if (!color.isValid() || color.spec() != QColor::Rgb)
        return QPen(color);
    static QHash<QRgb, QPen> pens;
    if (pens.size() >= 256)  // a host animating colours must not grow it for ever
        pens.clear();
    auto it = pens.find(color.rgba());
    if (it == pens.end())
        it = pens.insert(color.rgba(), QPen(color));
    return it.value();
}

QPen CTavoWidgetStyle::getPen(const QString& text)
{
    QPen pen;
    pen.setBrush(Qt::NoBrush);
    pen.setWidth(0);
    pen.setStyle(Qt::SolidLine);
    pen.setCapStyle(Qt::SquareCap);
    pen.setJoinStyle(Qt::BevelJoin);
    for (const QString& token : splitBlanks(text)) {
        if (token.contains(QLatin1String("px"))) {
            pen.setWidth(clampToInt(double(getUnsignedInteger(token, true))));
            continue;
        }
        int row = -1;
        for (int r = PenRowFirst; r <= PenRowLast; ++r) {
            if (token == QLatin1String(s_keywords[r].keyword)) {
                row = r;
                break;
            }
        }
        if (row >= 0) {
            const unsigned value = s_keywords[row].value;
            if (value == 0)
                continue;
            if (row >= 18 && row <= 22)
                pen.setStyle(Qt::PenStyle(value));
            else if (row >= 23 && row <= 25)
                pen.setCapStyle(Qt::PenCapStyle(value));
            else if (row >= 26 && row <= 28)
                pen.setJoinStyle(Qt::PenJoinStyle(value));
            continue;
        }
        if (QBrush* brush = parseBrush(token))
            pen.setBrush(*brush);
    }
    return pen;
}

QBrush* CTavoWidgetStyle::parseBrush(const QString& text)
{
    QBrush brush;
    if (text.startsWith(QLatin1String("lineargradient")))
        brush = getLinearGradient(text);
    else if (text.startsWith(QLatin1String("radialgradient")))
        brush = getRadialGradient(text);
    else if (text.startsWith(QLatin1String("url"))) {
        // A picture is no brush: it keeps the colour the text reads as, and paints nothing.
        brush = QBrush(getColor(text));
        brush.setStyle(Qt::NoBrush);
    } else
        brush = QBrush(getColor(text));
    return StyleResourceContainer.registerBrush(text, brush);
}

namespace {
// The argument list of a value function: "(" stays with the first argument.
QStringList gradientArguments(QString text, const char* word)
{
    text.remove(QLatin1String(word));
    text = text.trimmed();
    int open = text.indexOf(QLatin1Char('('));
    if (open < 0)
        open = 0;
    int close = text.lastIndexOf(QLatin1Char(')'));
    if (close < open)
        close = text.size();
    return text.mid(open, close - open).split(QStringLiteral(", "), Qt::SkipEmptyParts);
}

float keyValue(QString part, const char* key)
{
    part.remove(QLatin1String(key));
    part.remove(QLatin1Char(':'));
    return finiteOrZero(part.trimmed().toFloat());
}

void addStop(QGradient& gradient, QString part)
{
    part.remove(QLatin1String("stop"));
    part.remove(QLatin1Char(':'));
    part = part.trimmed();
    const int blank = part.indexOf(QLatin1Char(' '));
    const QString position = blank < 0 ? part : part.left(blank);
    const QString colour = blank < 0 ? QString() : part.mid(blank + 1).trimmed();
    const float at = position.toFloat();
    if (!std::isfinite(at) || at < 0.0f || at > 1.0f)
        return;
    gradient.setColorAt(at, CTavoWidgetStyle::getColor(colour));
}
} // namespace

QBrush CTavoWidgetStyle::getLinearGradient(const QString& text)
{
    float x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    QLinearGradient gradient;
    gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
    for (const QString& part : gradientArguments(text, "lineargradient")) {
        if (part.contains(QLatin1String("x1")))
            x1 = keyValue(part, "x1");
        else if (part.contains(QLatin1String("x2")))
            x2 = keyValue(part, "x2");
        if (part.contains(QLatin1String("y1")))
            y1 = keyValue(part, "y1");
        else if (part.contains(QLatin1String("y2")))
            y2 = keyValue(part, "y2");
        else if (part.contains(QLatin1String("stop")))
            addStop(gradient, part);
    }
    gradient.setStart(clampToInt(x1), clampToInt(y1));
    gradient.setFinalStop(clampToInt(x2), clampToInt(y2));
    return QBrush(gradient);
}

QBrush CTavoWidgetStyle::getRadialGradient(const QString& text)
{
    float cx = 0, cy = 0, radius = 0, fx = 0, fy = 0;
    QRadialGradient gradient;
    gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
    for (QString part : gradientArguments(text, "radialgradient")) {
        if (part.contains(QLatin1String("cx"))) {
            part.remove(QLatin1Char('('));
            cx = keyValue(part, "cx");
        } else if (part.contains(QLatin1String("cy"))) {
            cy = keyValue(part, "cy");
        } else if (part.contains(QLatin1String("radius"))) {
            radius = keyValue(part, "radius");
        } else if (part.contains(QLatin1String("fx"))) {
            fx = keyValue(part, "fx");
        } else if (part.contains(QLatin1String("fy"))) {
            fy = keyValue(part, "fy");
        } else if (part.contains(QLatin1String("stop"))) {
            addStop(gradient, part);
        }
    }
    gradient.setCenter(cx, cy);
    gradient.setCenterRadius(radius);
    gradient.setFocalPoint(fx, fy);
    return QBrush(gradient);
}

void* CTavoWidgetStyle::getPixmap(const QString& text, int& type)
{
    if (!text.contains(QLatin1String("url")))
        return nullptr;
    const QStringList parts = text.split(QLatin1Char(','));
    QString path = parts.first();
    path.remove(QLatin1String("url"));
    path.remove(QLatin1Char(')'));
    path.remove(QLatin1Char('('));
    path.remove(QLatin1Char(';'));
    path = path.trimmed();
    if (path.isEmpty() || !QFile::exists(path))
        return nullptr;
    QSize size(0, 0);
    if (parts.size() > 1) {
        QString sizeText = parts.at(1);
        sizeText.remove(QLatin1String("size"));
        sizeText.remove(QLatin1Char('('));
        sizeText.remove(QLatin1Char(')'));
        size = getSize(sizeText, true);
    }
    QMetaType::Type stored = QMetaType::QPixmap;
    void* picture = StyleResourceContainer.registerPixmap(path, size, stored);
    type = stored;
    return picture;
}

QPropertyAnimation* CTavoWidgetStyle::getAnimationPtr(const QString& text)
{
    m_animationArgs.setSeparator(QStringLiteral(","));
    m_animationArgs.set(text);
    const unsigned duration = m_animationArgs[QStringLiteral("duration")].toUInt();
    const QString loopText = m_animationArgs[QStringLiteral("loopCount")];
    const int loopCount = loopText.isEmpty() ? 1 : loopText.toInt();
    const QString property = m_animationArgs[QStringLiteral("property")];

    auto value = [&](const QString& v) -> QVariant {
        switch (getType(property)) {
        case QMetaType::QRect:
            return getRect(v, false);
        case QMetaType::QSize:
            return getSize(v, true);
        case QMetaType::QPoint:
            return getLocation(v);
        case QMetaType::UInt:
            return getUnsignedInteger(v, true);
        default:
            return v.toDouble();
        }
    };
    const QVariant start = value(m_animationArgs[QStringLiteral("start")]);
    const QVariant end = value(m_animationArgs[QStringLiteral("end")]);

    const QString curve = m_animationArgs[QStringLiteral("curve")];
    unsigned curveType = 0;
    for (int row = CurveRowFirst; row <= CurveRowLast; ++row) {
        if (curve.contains(keywordText(row))) {
            curveType = s_keywords[row].value;
            break;
        }
    }
    if (curve.contains(QLatin1Char('-'))) {
        for (int row = CurveModifierFirst; row <= CurveModifierLast; ++row) {
            if (curve.contains(keywordText(row))) {
                curveType += s_keywords[row].value;
                break;
            }
        }
    }
    if (curveType >= CurveLimit)
        return nullptr;

    auto* animation = new QPropertyAnimation();
    animation->setPropertyName(property.toLatin1());
    animation->setDuration(int(qMin(duration, unsigned(INT_MAX))));
    animation->setStartValue(start);
    animation->setEndValue(end);
    animation->setEasingCurve(QEasingCurve(QEasingCurve::Type(curveType)));
    animation->setLoopCount(loopCount);
    m_animationOwners.append(QSharedPointer<QPropertyAnimation>(animation));
    return animation;
}

// ---- scaling ----

void CTavoWidgetStyle::setDesignScreenResolution(int designX, int designY, int maxX, int maxY)
{
    if (designX <= 0 || designY <= 0) {
        guiLog(4, "Invalid design resolution %dx%d", designX, designY);
        return;
    }
    int screenWidth = INT_MAX, screenHeight = INT_MAX;
    if (QGuiApplication::instance()) {
        if (QScreen* screen = QGuiApplication::primaryScreen()) {
            screenWidth = screen->size().width();
            screenHeight = screen->size().height();
        }
    }
    const int actualX = qMin(screenWidth, maxX);
    const int actualY = qMin(screenHeight, maxY);
    if (actualX == designX && actualY == designY) {
        m_bIsScaled = false;
        guiLog(4, "Not scaling UI because design and actual resolutions match. Resolution %dx%d. Scale %fx%f",
               actualX, actualY, m_scaleFactorX, m_scaleFactorY);
        return;
    }
    m_bIsScaled = true;
    m_scaleFactorX = double(actualX) / double(designX);
    m_scaleFactorY = double(actualY) / double(designY);
    guiLog(4, "Scaling UI. Design resolution %dx%d. Actual resolution %dx%d. Scale %fx%f", designX,
           designY, actualX, actualY, m_scaleFactorX, m_scaleFactorY);
}

QString CTavoWidgetStyle::scaleStylesheet(const QString& text)
{
    if (!m_bIsScaled)
        return text;
    QString result = text;
    QRegExp rx(QStringLiteral("(\\d+)px"));
    const double mean = meanFactor(m_scaleFactorX, m_scaleFactorY);
    int pos = 0;
    while ((pos = rx.indexIn(result, pos)) != -1) {
        const unsigned value = scaleTruncatedUnsigned(rx.cap(1).toUInt(), mean);
        const QString replacement = QStringLiteral("%1px").arg(value);
        result.replace(pos, rx.matchedLength(), replacement);
        pos += replacement.size();
    }
    return result;
}

void CTavoWidgetStyle::resetScaling()
{
    m_bIsScaled = false;
    m_scaleFactorX = 1.0;
    m_scaleFactorY = 1.0;
}

QString CTavoWidgetStyle::name(TavoWidgetStyleAttributeNames index)
{
    if (int(index) < 0 || int(index) >= TavoStyleAttributeCount)
        return QString();
    return QString::fromLatin1(s_attributes[index].name);
}

int CTavoWidgetStyle::keywordCount()
{
    return s_keywordCount;
}

QString CTavoWidgetStyle::keyword(int index)
{
    return index >= 0 && index < s_keywordCount ? keywordText(index) : QString();
}

unsigned CTavoWidgetStyle::keywordValue(int index)
{
    return index >= 0 && index < s_keywordCount ? s_keywords[index].value : 0;
}
