// Hostile field descriptions and addresses: the parameter string, the mode
// list and the default text of a field, the mode and encoding names it is
// switched to, the characters typed into it, and every address check.
// Input: up to six parts separated by a 0x01 byte (params, modes, default text,
// mode spec, encoding spec, typed text); the first byte picks echo mode, limits
// and the record form. Texts shown in the field are read as Latin-1: still two
// UTF-8 bytes above 0x7f, without a font fallback search per odd character,
// which would be most of the run.
#include <QApplication>

#include <cstdint>

#include "input/CTavoIPv6AddressValidator.h"
#include "input/CTavoInput.h"
#include "input/CTavoIpAddressValidator.h"

namespace {
CTavoInput* field()
{
    static int argc = 1;
    static char name[] = "fuzz_inputparams";
    static char* argv[] = {name, nullptr};
    static QApplication* app = nullptr;
    if (!app) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        app = new QApplication(argc, argv);
        // The field logs every refused value; printing them would be most of the run.
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }
    static CTavoInput* input = new CTavoInput;
    return input;
}

void checkAddress(const QString& text)
{
    for (int type = 0; type <= 3; ++type) {
        for (const char* kind : {"", "LLA", "ULA", "GLA", "GTW", "MCA", "ANY"})
            isValidIPAddress(text, type, QString::fromLatin1(kind));
    }
    isValidIPv6Prefix(text);
    isValidIPv6Address(text, true);
    QString copy = text;
    int pos = copy.size();
    CTavoIpAddressValidator ipv4;
    ipv4.validate(copy, pos);
    CTavoIPv6AddressValidator ipv6;
    ipv6.validate(copy, pos);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1 || size > 1024)
        return 0;
    CTavoInput* input = field();
    const uint8_t control = data[0];
    QList<QByteArray> parts = QByteArray(reinterpret_cast<const char*>(data + 1), int(size - 1)).split('\x01');
    while (parts.size() < 6)
        parts.append(QByteArray());

    const int echoMode = (control & 3);
    const int maxLength = (control & 4) ? int(control) - 64 : 512;
    if (control & 8) {
        CTavoInputParameters p;
        p.m_uriParams = QString::fromUtf8(parts[0]);
        p.m_modes = QString::fromUtf8(parts[1]);
        p.m_defaultText = QString::fromLatin1(parts[2]);
        p.m_maxLength = maxLength;
        p.m_echoMode = echoMode;
        p.m_showDefaultText = control & 16;
        p.m_mode = int(control % 16) - 1;
        p.m_encoding = int(control % 7) - 1;
        input->set(p);
    } else {
        input->set(parts[1].constData(), QString::fromLatin1(parts[2]), maxLength, echoMode, parts[0].constData(),
                   control & 16, 0, control & 32, control & 64);
    }
    if (!parts[3].isEmpty())
        input->switchToMode(QString::fromUtf8(parts[3]));
    if (!parts[4].isEmpty())
        input->switchToEncoding(QString::fromUtf8(parts[4]));
    for (const QChar c : QString::fromLatin1(parts[5]).left(64))
        input->onEntered(c, control & 128);
    input->onModified();
    input->backspace();
    input->isValidInput();
    checkAddress(input->text());
    checkAddress(QString::fromUtf8(parts[2]));
    // Deferred deletions and posted events run as in a GUI's event loop; a
    // fuzzer has none, and what they hold would pile up input after input.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    return 0;
}
