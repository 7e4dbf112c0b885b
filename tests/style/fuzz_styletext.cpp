// Style sheet text and attribute text from untrusted skins.
#include <QGuiApplication>

#include <cstdint>
#include <cstring>
#include <new>

#include "style/CTavoResourceRepository.h"
#include "style/CTavoStyleSheet.h"

static QGuiApplication* app()
{
    static int argc = 1;
    static char name[] = "fuzz_styletext";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication* instance = new QGuiApplication(argc, argv);
    return instance;
}

class Probe : public QObject
{
};

// The repository keeps every SVG renderer it made until it is destroyed, by
// design: handles to them may be about. A fuzz input names new paths each
// time, so each input ends with a fresh repository, as a new process would have.
static void freshRepository()
{
    StyleResourceContainer.~CTavoResourceRepository();
    new (&StyleResourceContainer) CTavoResourceRepository;
}

static int fuzzOne(const uint8_t* data, size_t size)
{
    app();
    // First line is the attribute text, the rest the style text.
    QByteArray input(reinterpret_cast<const char*>(data), int(size));
    input.replace('\0', ' ');
    const int newline = input.indexOf('\n');
    const QByteArray attributes = newline < 0 ? QByteArray() : input.left(newline);
    const QByteArray style = newline < 0 ? input : input.mid(newline + 1);
    CTavoStyleSheet sheet;
    sheet.set(style.constData(), attributes.constData());
    Probe probe;
    probe.setObjectName(QStringLiteral("x"));
    if (CTavoWidgetStyle* s = sheet.get(&probe, QStringLiteral("pressed"))) {
        s->contentRect(QRect(0, 0, 100, 100));
        s->Color("color");
        s->Pen("border");
    }
    for (auto it = sheet.styles().constBegin(); it != sheet.styles().constEnd(); ++it)
        sheet.get(it.key());
    sheet.getDefinedClasses({QStringLiteral("x"), QStringLiteral("y")});
    CTavoWidgetStyle::resetScaling();
    // Deferred deletions and Qt's cache-trimming timers run as in a GUI's event loop.
    QCoreApplication::processEvents();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // The input's styles and their image handles are gone before the repository goes.
    const int result = fuzzOne(data, size);
    freshRepository();
    return result;
}
