#include "CZedaNetworkScreen.h"

#include <QStringList>

#include "CTXMLUriLib.h"
#include "input/CTavoInput.h"
#include "log/GuiLog.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoWidget.h"

namespace {
// The phone's name: 32 bytes, capitalised first; the address: IPv4 under its mask.
const char kNameModes[] = "Abc;abc;ABC;123";
const int kNameBytes = 32;
const char kIpModes[] = "IP";
const int kIpBytes = 15;
}  // namespace

CZedaNetworkScreen::CZedaNetworkScreen(QWidget* parent)
    : CTavoLayoutWidget(parent)
{
    setObjectName(QStringLiteral("network"));
    // Built when first shown, while the window is active: the fields' set() would
    // take the focus from the screen on show now. Disabled, they only describe
    // themselves; each claims the focus when this screen shows.
    setEnabled(false);
    m_statusBar = new CTavoWidget(this, 2);
    m_statusBar->setObjectName(QStringLiteral("status-bar"));
    m_title = new CTavoLabelWidget(this);
    m_title->setObjectName(QStringLiteral("title"));
    m_ipLabel = new CTavoLabelWidget(this);
    m_ipLabel->setObjectName(QStringLiteral("ip-label"));
    m_nameLabel = new CTavoLabelWidget(this);
    m_nameLabel->setObjectName(QStringLiteral("name-label"));
    m_modeId = new CTavoLabelWidget(this);
    m_modeId->setObjectName(QStringLiteral("mode-id"));

    // Each field claims the focus when the screen shows; the one made last keeps
    // it, and that is the address.
    m_name = new CTavoInput(this);
    m_name->setObjectName(QStringLiteral("name-field"));
    m_ip = new CTavoInput(this);
    m_ip->setObjectName(QStringLiteral("ip-field"));
    for (CTavoInput* field : {m_name, m_ip})
        connect(field, &CTavoInput::contextSensitiveSk, this, &CZedaNetworkScreen::contextSensitiveSk);
    connect(m_name, &CTavoInput::modeAndEncodingIdentifierUpdated, this, [this](const QString& id) {
        if (m_modeId->text() != id.trimmed())
            m_modeId->setText(id.trimmed());
    });
    describeFields();
    retranslateUi();
    setEnabled(true);
}

void CZedaNetworkScreen::describeFields()
{
    m_name->set(kNameModes, QString(), kNameBytes, 0, "");
    m_ip->set(kIpModes, QString(), kIpBytes, 0, "");
}

void CZedaNetworkScreen::applySkin(const QString& style, const QString& attributes)
{
    QString s = style;
    QString a = attributes;
    updateStyle(s, a, true);
}

void CZedaNetworkScreen::layout()
{
    CTavoLayoutWidget::layout();
    // The fields are real widgets: their blocks give place and size, Qt's own
    // style sheet the rest.
    for (CTavoInput* field : {m_name, m_ip}) {
        if (CTavoWidgetStyle* style = m_styleSheet.get(field, QString()))
            field->setGeometry(QRect(style->Location(QStringLiteral("location")),
                                     style->Size(QStringLiteral("size"), QSize(300, 44))));
    }
}

void CZedaNetworkScreen::retranslateUi()
{
    m_title->setText(tr("Network"));
    m_ipLabel->setText(tr("IP address"));
    m_nameLabel->setText(tr("Phone name"));
}

void CZedaNetworkScreen::onSoftkey(QString url, QString data)
{
    Q_UNUSED(data);
    CTavoInput* field = CTavoInput::m_pFocusedInput;
    if (!isVisible() || !field || field->parent() != this)
        return;
    const QByteArray key = url.toUtf8();
    switch (CTXMLUriLib::type(key.constData())) {
    case TxmlUriToggleEditMode: {
        // The next mode of the field's list, round to the first.
        const QStringList modes = field->modes().split(QLatin1Char(';'), Qt::SkipEmptyParts);
        if (modes.size() > 1)
            field->switchToMode(modes.at((modes.indexOf(field->modeName()) + 1) % modes.size()));
        break;
    }
    case TxmlUriBackspace:
        field->onBackspaceKeyEvent();
        break;
    case TxmlUriDone:
        guiLog(2, "zedagui: %s \"%s\" %s", qPrintable(field->objectName()), qPrintable(field->text()),
               field->isValidInput() ? "saved" : "refused");
        break;
    case TxmlUriReset:
        field->setText(field->defaultText());
        break;
    default:
        break;
    }
}
