#include "style/CTavoWidgetStyle.h"

#include <QPropertyAnimation>

bool CTavoWidgetStyle::m_bIsScaled = false;
double CTavoWidgetStyle::m_scaleFactorX = 1.0;
double CTavoWidgetStyle::m_scaleFactorY = 1.0;

CTavoWidgetStyle::CTavoWidgetStyle() : m_animationArgs(QString(), QStringLiteral(",")) {}
const QVariant& CTavoWidgetStyle::get(const QString&) const { static const QVariant v; return v; }
const QVariant& CTavoWidgetStyle::get(const char*) const { static const QVariant v; return v; }
unsigned CTavoWidgetStyle::UInt(const QString&, unsigned def, bool*) const { return def; }
int CTavoWidgetStyle::Int(const QString&, int def, bool*) const { return def; }
QSize CTavoWidgetStyle::Size(const QString&, const QSize& def, bool*) const { return def; }
QPoint CTavoWidgetStyle::Location(const QString&, const QPoint& def, bool*) const { return def; }
QColor CTavoWidgetStyle::Color(const QString&, const QColor& def, bool*) const { return def; }
QFont CTavoWidgetStyle::Font(const QString&, const QFont& def, bool*) const { return def; }
QString CTavoWidgetStyle::String(const QString&, const QString& def, bool*) const { return def; }
unsigned CTavoWidgetStyle::Enum(const QString&, unsigned def, bool*) const { return def; }
QRect CTavoWidgetStyle::BoxLength(const QString&, const QRect& def, bool*) const { return def; }
bool CTavoWidgetStyle::Bool(const QString&, bool def, bool*) const { return def; }
QUrl CTavoWidgetStyle::Url(const QString&, const QUrl& def, bool*) const { return def; }
QPen CTavoWidgetStyle::Pen(const QString&, const QPen& def, bool*) const { return def; }
QBrush CTavoWidgetStyle::Brush(const QString&, const QBrush& def, bool*) const { return def; }
QBrush* CTavoWidgetStyle::BrushPtr(const QString&, QBrush* def, bool*) const { return def; }
CTavoImage CTavoWidgetStyle::Image(const QString&, const CTavoImage& def, bool*) const { return def; }
QPropertyAnimation* CTavoWidgetStyle::AnimationPtr(const QString&, QObject*, bool*) const { return nullptr; }
bool CTavoWidgetStyle::isValid() const { return !m_properties.isEmpty(); }
QRect CTavoWidgetStyle::contentRect(const QRect& rect) const { return rect; }
QRect CTavoWidgetStyle::borderRect(const QRect& rect) const { return rect; }
unsigned CTavoWidgetStyle::getLabelStyle(QFont&, QColor&, unsigned& flags) const { flags = 1 | 4096; return 0; }
void CTavoWidgetStyle::alignRect(const QString&, const QRect&, QRect&, QPoint) const {}
void CTavoWidgetStyle::setGeometry(QWidget*, const QRect&) const {}
void CTavoWidgetStyle::paintBox(QPainter*, int, int, int, int) const {}
void CTavoWidgetStyle::paintBox(QPainter*, const QRect&) const {}
QGraphicsEffect* CTavoWidgetStyle::GraphicsEffect(const QString&, QObject*) const { return nullptr; }
void CTavoWidgetStyle::set(const QString&) { resetContent(); }
void CTavoWidgetStyle::update(const CTavoWidgetStyle&) {}
void CTavoWidgetStyle::resetContent() { m_properties.clear(); m_brushes.clear(); m_images.clear(); m_animations.clear(); m_animationOwners.clear(); }
int CTavoWidgetStyle::getType(const QString&) { return 0; }
QVariant CTavoWidgetStyle::parseAttribute(const QString&, const QString& value, int& type) { type = 0; return value; }
QColor CTavoWidgetStyle::getColor(const QString&) { return QColor(); }
QFont CTavoWidgetStyle::getFont(const QString&) { return QFont(); }
unsigned CTavoWidgetStyle::getUnsignedInteger(const QString&, bool) { return 0; }
QSize CTavoWidgetStyle::getSize(const QString&, bool) { return QSize(); }
QPoint CTavoWidgetStyle::getLocation(const QString&) { return QPoint(); }
QPolygon CTavoWidgetStyle::getPolygon(const QString&) { return QPolygon(); }
bool CTavoWidgetStyle::getBool(const QString&) { return false; }
QUrl CTavoWidgetStyle::getUrl(const QString&) { return QUrl(); }
unsigned CTavoWidgetStyle::getEnum(const QString&, int*) { return 0; }
unsigned CTavoWidgetStyle::getEnumWithinRange(const QString&, int, int, int*) { return 0; }
QRect CTavoWidgetStyle::getRect(const QString&, bool) { return QRect(); }
QPen CTavoWidgetStyle::getPen(const QString&) { return QPen(); }
QBrush* CTavoWidgetStyle::parseBrush(const QString&) { return nullptr; }
QBrush CTavoWidgetStyle::getLinearGradient(const QString&) { return QBrush(); }
QBrush CTavoWidgetStyle::getRadialGradient(const QString&) { return QBrush(); }
void* CTavoWidgetStyle::getPixmap(const QString&, int& type) { type = QMetaType::QPixmap; return nullptr; }
QPropertyAnimation* CTavoWidgetStyle::getAnimationPtr(const QString&) { return nullptr; }
void CTavoWidgetStyle::setDesignScreenResolution(int, int, int, int) {}
QString CTavoWidgetStyle::scaleStylesheet(const QString& text) { return text; }
void CTavoWidgetStyle::resetScaling() { m_bIsScaled = false; m_scaleFactorX = m_scaleFactorY = 1.0; }
QString CTavoWidgetStyle::name(TavoWidgetStyleAttributeNames) { return QString(); }
int CTavoWidgetStyle::keywordCount() { return 0; }
QString CTavoWidgetStyle::keyword(int) { return QString(); }
unsigned CTavoWidgetStyle::keywordValue(int) { return 0; }
