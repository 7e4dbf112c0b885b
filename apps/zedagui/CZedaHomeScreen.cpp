#include "CZedaHomeScreen.h"

#include "log/GuiLog.h"
#include "style/CTavoIconDefinition.h"
#include "style/CTavoIconRepository.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoParagraph.h"
#include "widgets/CTavoWidget.h"
#include "widgets/TavoButtonSettings.h"

namespace {
struct TileT {
    const char* name;   // object name: the skin block and the demo's press target
    const char* label;  // English text, also the translation key
    const char* url;    // what a click sends to the core
};

const TileT tileTable[] = {
    {"Messages", QT_TRANSLATE_NOOP("CZedaHomeScreen", "Messages"), "Home:Messages"},
    {"Contacts", QT_TRANSLATE_NOOP("CZedaHomeScreen", "Contacts"), "Home:Contacts"},
    {"CallHistory", QT_TRANSLATE_NOOP("CZedaHomeScreen", "Call history"), "Home:CallHistory"},
    {"Settings", QT_TRANSLATE_NOOP("CZedaHomeScreen", "Settings"), "Home:Settings"},
};

// Translations pushed by the core are keyed by the English text.
QString text(const char* english)
{
    return CZedaHomeScreen::tr(english, english);
}

// The icon of the repository's name table that carries this name; -1 if none.
int iconNumber(const char* name)
{
    const QString wanted = QString::fromLatin1(name);
    for (int i = 1; i < TAVO_ICON_COUNT; ++i) {
        if (tavoIconNames[i] == wanted)
            return i;
    }
    return -1;
}
}  // namespace

CZedaHomeScreen::CZedaHomeScreen(QWidget* parent)
    : CTavoLayoutWidget(parent)
{
    setObjectName(QStringLiteral("home"));
    // Created in painting order: strip, texts, then the tiles over the background.
    m_statusBar = new CTavoWidget(this, 2);
    m_statusBar->setObjectName(QStringLiteral("status-bar"));
    m_clock = new CTavoLabelWidget(this);
    m_clock->setObjectName(QStringLiteral("clock"));
    m_title = new CTavoLabelWidget(this);
    m_title->setObjectName(QStringLiteral("title"));
    m_intro = new CTavoParagraph(this);
    m_intro->setObjectName(QStringLiteral("intro"));

    int id = 1;
    for (const TileT& t : tileTable) {
        const QString url = QString::fromLatin1(t.url);
        const QString label = text(t.label);
        // The tile's own label names it; the icon carries no second one.
        TavoButtonSettings settings;
        settings.set(QString::fromLatin1(t.name), label, url, QString(), QString(),
                     CTavoIconDefinition(url, QString(), iconNumber(t.name)), QString(), id++);
        auto* tile = new CTavoButton(&settings, this);
        tile->setObjectName(QString::fromLatin1(t.name));
        connect(tile, &CTavoButton::buttonClicked, this,
                [this](QString url, QString data) { onWidgetEvent(url, data); });
        m_tiles.append(tile);
    }
}

void CZedaHomeScreen::applySkin(const QString& style, const QString& attributes)
{
    QString s = style;
    QString a = attributes;
    updateStyle(s, a, true);
    // The tiles were built before the skin, so their vector icons were drawn at
    // the fallback size. An icon keeps an unchanged definition as it is: clear
    // it, then set it again to draw it at the skin's icon size.
    for (int i = 0; i < m_tiles.size(); ++i) {
        m_tiles[i]->setIcon(-1);
        m_tiles[i]->setIcon(iconNumber(tileTable[i].name));
    }
    retranslateUi();
}

void CZedaHomeScreen::setClock(const QString& time)
{
    if (m_clock->text() != time)
        m_clock->setText(time);
}

void CZedaHomeScreen::setPhoneState(bool coreUp, bool directoryUp)
{
    if (coreUp == m_coreUp && directoryUp == m_directoryUp)
        return;
    m_coreUp = coreUp;
    m_directoryUp = directoryUp;
    refreshIntro();
}

CTavoButton* CZedaHomeScreen::tile(const QString& name) const
{
    for (CTavoButton* t : m_tiles) {
        if (t->objectName() == name)
            return t;
    }
    return nullptr;
}

void CZedaHomeScreen::retranslateUi()
{
    m_title->setText(text(QT_TRANSLATE_NOOP("CZedaHomeScreen", "Home")));
    for (int i = 0; i < m_tiles.size(); ++i)
        m_tiles[i]->setLabel(text(tileTable[i].label));
    refreshIntro();
}

void CZedaHomeScreen::holdBackIntro(bool hold)
{
    if (hold == m_introHeldBack)
        return;
    m_introHeldBack = hold;
    if (!hold)
        refreshIntro();
}

void CZedaHomeScreen::refreshIntro()
{
    if (m_introHeldBack)
        return;
    const QString core = m_coreUp ? text(QT_TRANSLATE_NOOP("CZedaHomeScreen", "Connected to the core"))
                                  : text(QT_TRANSLATE_NOOP("CZedaHomeScreen", "Waiting for the core"));
    const QString directory = m_directoryUp
                                  ? text(QT_TRANSLATE_NOOP("CZedaHomeScreen", "Directory online"))
                                  : text(QT_TRANSLATE_NOOP("CZedaHomeScreen", "Directory offline"));
    m_intro->setText(QStringLiteral("<div align=\"center\"><b>%1</b> &middot; %2</div>").arg(core.toHtmlEscaped(), directory.toHtmlEscaped()));
}
