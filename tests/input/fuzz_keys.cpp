// Hostile key sequences into a field of the sample skin with its multi-tap
// strip, and into a strip that speaks input method events to a QLineEdit:
// dial pad keys in and out of range, modes and encodings switched in the
// middle of a character, time-outs, Backspace, arrows, characters of any
// code, new limits, pointer presses and moves for the magnifier, and process-
// wide keymap changes. Each input is a list of two-byte operations.
#include <QApplication>
#include <QDir>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>

#include <cstdint>

#include "input/CTavoInput.h"
#include "input/CTavoKateInput.h"
#include "input/CTavoKateMap.h"
#include "layout/CTavoLayoutMgr.h"
#include "layout/CTavoLayoutWidget.h"
#include "widgets/CTavoMagnifyingGlass.h"

namespace {
struct World
{
    CTavoLayoutMgr* mgr = nullptr;
    CTavoLayoutWidget* surface = nullptr;
    CTavoInput* field = nullptr;
    QLineEdit* plain = nullptr;
    CTavoKateInput* ime = nullptr;
};

World& world()
{
    static World w;
    if (w.field)
        return w;
    static int argc = 1;
    static char name[] = "fuzz_keys";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    new QApplication(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    // The sample skin gives fields their strip.
    const QString run = qEnvironmentVariable("TGUI_RUN_DIR");
    if (!run.isEmpty() && QDir::setCurrent(run)) {
        QCoreApplication::setApplicationName(QStringLiteral("zedagui"));
        w.mgr = new CTavoLayoutMgr(nullptr, Qt::WindowFlags(), true);
    }
    w.surface = new CTavoLayoutWidget;
    w.surface->resize(480, 200);
    w.field = new CTavoInput(w.surface);
    w.field->setGeometry(10, 100, 300, 40);
    w.field->setUseInlineBackspace(true);
    QImage mask(6, 2, QImage::Format_ARGB32);
    mask.fill(Qt::white);
    w.field->magnifyingGlass()->setMagGlassMask(mask);
    w.field->magnifyingGlass()->setMagFactor(1.5f);
    w.plain = new QLineEdit(w.surface);
    w.plain->setGeometry(10, 150, 300, 40);
    w.ime = new CTavoKateInput(w.surface, true, w.plain);
    QObject::connect(w.ime, &CTavoKateInput::showme, [](QWidget* s, bool show) { s->setVisible(show); });
    w.surface->show();
    return w;
}

const char* const kModes[] = {"Abc", "abc", "ABC", "123", "IP", "URL", "123T", "Tel", "TelNoNav", "Hex",
                              "XT9 PinYin", "IPv6", "123*", "bogus"};
const char* const kEncodings[] = {"ASCII", "Latin", "Cyrillic", "Katakana", "Unicode", "", "More"};
const Qt::Key kArrows[] = {Qt::Key_Down, Qt::Key_Left, Qt::Key_Right, Qt::Key_Up};

void dial(QWidget* w, int key, QEvent::Type type)
{
    const Qt::Key k = key == 10 ? Qt::Key_Asterisk : key == 11 ? Qt::Key_NumberSign : Qt::Key(Qt::Key_0 + key % 10);
    const QString text = key == 10 ? QStringLiteral("*") : key == 11 ? QStringLiteral("#") : QString::number(key % 10);
    QKeyEvent e(type, k, Qt::KeypadModifier, text);
    QApplication::sendEvent(w, &e);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 512)
        return 0;
    World& w = world();
    CTavoInput* field = w.field;
    field->set("Abc;abc;123;Hex;URL;Tel;IP", QString(), 32, QLineEdit::Normal, "min=-50;max=900");
    field->setFocus(Qt::TabFocusReason);
    w.plain->clear();
    w.ime->onModeSelected(InputModeLower);
    w.ime->onEncodingSelected(InputEncodingASCII);
    for (size_t i = 0; i + 1 < size; i += 2) {
        const int op = data[i] & 0x0F;
        const uint8_t arg = data[i + 1];
        switch (op) {
        case 0:
            dial(field, arg % 12, QEvent::KeyPress);
            break;
        case 1:
            dial(field, arg % 12, QEvent::KeyRelease);
            break;
        case 2:
            field->switchToMode(QString::fromLatin1(kModes[arg % 14]));
            break;
        case 3:
            field->switchToEncoding(QString::fromLatin1(kEncodings[arg % 7]));
            break;
        case 4:
            if (field->kateInput())
                field->kateInput()->onTimeout();
            w.ime->onTimeout();
            break;
        case 5: {
            QKeyEvent e(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier);
            QApplication::sendEvent(field, &e);
            break;
        }
        case 6: {
            QKeyEvent e(arg & 0x80 ? QEvent::KeyRelease : QEvent::KeyPress, kArrows[arg % 4], Qt::NoModifier);
            QApplication::sendEvent(field, &e);
            break;
        }
        case 7:
            if (i + 2 < size)
                field->onEntered(QChar(ushort(arg | (data[i + 2] << 8))), data[i] & 0x10);
            break;
        case 8:
            field->set(kModes[arg % 14], QString(), arg % 40, (arg >> 4) % 4, "min=10;max=20");
            break;
        case 9:
            field->onInlineBackspace();
            break;
        case 10: {
            QKeyEvent e(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
            QApplication::sendEvent(field, &e);
            break;
        }
        case 11: {
            const QEvent::Type type = arg & 1 ? QEvent::MouseMove : arg & 2 ? QEvent::MouseButtonRelease
                                                                                : QEvent::MouseButtonPress;
            const QPointF at(arg, arg % 40);
            QMouseEvent e(type, at, at, type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(field, &e);
            break;
        }
        case 12:
            if (field->kateInput())
                field->kateInput()->handleKeyEvent(int(int8_t(arg)), data[i] & 0x10);
            break;
        case 13: {
            QStringList keys;
            for (int k = 0; k < (arg % 14); ++k)
                keys << QString(QChar(0x20 + ((arg * (k + 3)) % 0x3000)));
            CTavoKateMap::alphanumericMap().updateAlphanumericMap(keys);
            break;
        }
        case 14:
            CTavoKateMap::dialMap().updateDialPadAsPerInternationalPrefix(arg & 1, arg & 2);
            field->updateKeymap();
            break;
        default:
            w.ime->handleKeyEvent(arg % 14, true);
            if (arg & 0x40)
                w.ime->onEncodingSelected(InputEncodingT(arg % 6));
            if (arg & 0x80)
                w.ime->onDeleteUnicodeChar();
            break;
        }
    }
    // Leave the process-wide maps as a new run expects them.
    QStringList none;
    CTavoKateMap::alphanumericMap().updateAlphanumericMap(none);
    CTavoKateMap::dialMap().updateDialPad(false);
    if (field->kateInput())
        field->kateInput()->onTimeout();
    w.ime->onTimeout();
    // Deferred deletions and posted events run as in a GUI's event loop; a
    // fuzzer has none, and what they hold would pile up input after input.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    return 0;
}
