#include "CZedaHomeScreen.h"

#include "log/GuiLog.h"
#include "style/CTavoIconDefinition.h"
#include "style/CTavoIconRepository.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoPageView.h"
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
    {"Call", QT_TRANSLATE_NOOP("CZedaHomeScreen", "Dial"), "Home:Call"},
    {"Calendar", QT_TRANSLATE_NOOP("CZedaHomeScreen", "Calendar"), "Home:Calendar"},
    {"Applications", QT_TRANSLATE_NOOP("CZedaHomeScreen", "Apps"), "Home:Applications"},
    {"Features", QT_TRANSLATE_NOOP("CZedaHomeScreen", "Features"), "Home:Features"},
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
    m_dots = new CTavoLabelWidget(this);
    m_dots->setObjectName(QStringLiteral("page-dots"));
    // The tiles in pages of the skin's size, swiped sideways.
    m_pages = new CTavoPageView(this);
    m_pages->setObjectName(QStringLiteral("home-pages"));
    connect(m_pages, &CTavoPageView::pageChanged, this, &CZedaHomeScreen::showPage);

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
        m_pages->append(tile);
    }
}

void CZedaHomeScreen::showPage(int page, int pages)
{
    // One dot a page, the shown one filled.
    QString dots;
    for (int i = 0; i < pages; ++i)
        dots += (i == page ? QChar(0x25CF) : QChar(0x25CB)) + QStringLiteral("  ");
    m_dots->setText(pages > 1 ? dots.trimmed() : QString());
}

QString CZedaHomeScreen::getContextSensitiveInformation()
{
    return QStringLiteral("page=%1/%2 offset=%3 moving=%4")
        .arg(m_pages->currentPage() + 1)
        .arg(m_pages->pageCount())
        .arg(m_pages->scrollOffset().x())
        .arg(m_pages->isBeingScrolled() ? QStringLiteral("yes") : QStringLiteral("no"));
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
    m_pages->format(Qt::Horizontal, -1);
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

void CZedaHomeScreen::setContactCount(int count)
{
    if (count == m_contacts)
        return;
    m_contacts = count;
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
    QString html = QStringLiteral("<b>%1</b> &middot; %2").arg(core.toHtmlEscaped(), directory.toHtmlEscaped());
    if (m_contacts >= 0)
        html += QStringLiteral(" &middot; ")
                + text(QT_TRANSLATE_NOOP("CZedaHomeScreen", "%1 contacts")).arg(m_contacts).toHtmlEscaped();
    m_intro->setText(QStringLiteral("<div align=\"center\">%1</div>").arg(html));
}
