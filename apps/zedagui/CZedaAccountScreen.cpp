#include "CZedaAccountScreen.h"

#include <QImage>
#include <QPainter>

#include "CTXMLUriLib.h"
#include "input/CTavoInput.h"
#include "log/GuiLog.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoMagnifyingGlass.h"
#include "widgets/CTavoWidget.h"

namespace {
// The encodings the Script key steps through, in order.
const char* const kScripts[] = {"ASCII", "Latin", "Cyrillic", "Katakana", "Unicode"};
const int kScriptCount = int(sizeof kScripts / sizeof kScripts[0]);

// A glass with rounded corners.
QImage roundedMask()
{
    QImage mask(300, 100, QImage::Format_ARGB32);
    mask.fill(Qt::transparent);
    QPainter painter(&mask);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(0, 0, 300, 100), 18, 18);
    return mask;
}
}  // namespace

CZedaAccountScreen::CZedaAccountScreen(QWidget* parent)
    : CTavoLayoutWidget(parent)
{
    setObjectName(QStringLiteral("account"));
    // Built when first shown, while the window is active: the fields' set() would
    // take the focus from the screen on show now. Disabled, they only describe
    // themselves; each claims the focus when this screen shows.
    setEnabled(false);
    m_statusBar = new CTavoWidget(this, 2);
    m_statusBar->setObjectName(QStringLiteral("status-bar"));
    m_title = new CTavoLabelWidget(this);
    m_title->setObjectName(QStringLiteral("title"));
    m_portLabel = new CTavoLabelWidget(this);
    m_portLabel->setObjectName(QStringLiteral("port-label"));
    m_passwordLabel = new CTavoLabelWidget(this);
    m_passwordLabel->setObjectName(QStringLiteral("password-label"));
    m_nameLabel = new CTavoLabelWidget(this);
    m_nameLabel->setObjectName(QStringLiteral("display-name-label"));
    m_script = new CTavoLabelWidget(this);
    m_script->setObjectName(QStringLiteral("script"));

    // Each field claims the focus when the screen shows; the one made last
    // keeps it, and that is the port. Tab goes on to the password, then the name.
    m_password = new CTavoInput(this);
    m_password->setObjectName(QStringLiteral("password-field"));
    m_name = new CTavoInput(this);
    m_name->setObjectName(QStringLiteral("display-name-field"));
    m_port = new CTavoInput(this);
    m_port->setObjectName(QStringLiteral("port-field"));
    setTabOrder(m_port, m_password);
    setTabOrder(m_password, m_name);
    for (CTavoInput* field : {m_port, m_password, m_name})
        connect(field, &CTavoInput::contextSensitiveSk, this, &CZedaAccountScreen::contextSensitiveSk);
    connect(m_name, &CTavoInput::encodingSelected, this, [this] {
        const QString name = m_name->encodingName();
        if (m_script->text() != name)
            m_script->setText(name);
    });

    m_port->set("123", QString(), 5, QLineEdit::Normal, "min=1024;max=65535");
    m_password->set("123", QString(), 8, QLineEdit::Password, "");
    m_name->setUseInlineBackspace(true);
    m_name->set("Abc;abc;ABC", QStringLiteral("Front desk"), 32, QLineEdit::Normal, "");
    // The glass is the host's to shape: a factor and a mask.
    if (CTavoMagnifyingGlass* glass = m_name->magnifyingGlass()) {
        glass->setMagFactor(1.6f);
        glass->setMagGlassMask(roundedMask());
    }
    retranslateUi();
    setEnabled(true);
}

void CZedaAccountScreen::applySkin(const QString& style, const QString& attributes)
{
    QString s = style;
    QString a = attributes;
    updateStyle(s, a, true);
}

void CZedaAccountScreen::layout()
{
    CTavoLayoutWidget::layout();
    for (CTavoInput* field : {m_port, m_password, m_name}) {
        if (CTavoWidgetStyle* style = m_styleSheet.get(field, QString()))
            field->setGeometry(QRect(style->Location(QStringLiteral("location")),
                                     style->Size(QStringLiteral("size"), QSize(300, 44))));
    }
}

void CZedaAccountScreen::retranslateUi()
{
    m_title->setText(tr("Account"));
    m_portLabel->setText(tr("SIP port"));
    m_passwordLabel->setText(tr("Password"));
    m_nameLabel->setText(tr("Display name"));
}

void CZedaAccountScreen::onSoftkey(QString url, QString data)
{
    Q_UNUSED(data);
    CTavoInput* field = CTavoInput::m_pFocusedInput;
    if (!isVisible() || !field || field->parent() != this)
        return;
    const QByteArray key = url.toUtf8();
    switch (CTXMLUriLib::type(key.constData())) {
    case TxmlUriEncoding: {
        // Letters only: the next script of the list, round to the first.
        if (!field->isAlphabeticalEditMode())
            break;
        int at = 0;
        while (at < kScriptCount && field->encodingName() != QLatin1String(kScripts[at]))
            ++at;
        field->switchToEncoding(QLatin1String(kScripts[(at + 1) % kScriptCount]));
        break;
    }
    case TxmlUriBackspace:
        field->onBackspaceKeyEvent();
        break;
    case TxmlUriDone:
        guiLog(2, "zedagui: %s %s", qPrintable(field->objectName()), field->isValidInput() ? "saved" : "refused");
        break;
    default:
        break;
    }
}
