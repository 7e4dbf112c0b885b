// Declaration values of every type from untrusted skins, also under scaling.
#include <QGuiApplication>
#include <QPropertyAnimation>

#include <cstdint>
#include <new>

#include "style/CTavoResourceRepository.h"
#include "style/CTavoWidgetStyle.h"

static void app()
{
    static int argc = 1;
    static char name[] = "fuzz_stylevalues";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication* instance = new QGuiApplication(argc, argv);
    (void)instance;
}

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
    if (size < 1)
        return 0;
    // First byte picks the scale; the rest is one value given to every attribute name.
    if (data[0] & 1)
        CTavoWidgetStyle::setDesignScreenResolution(400, 160, 800, 480);
    const QString value = QString::fromUtf8(reinterpret_cast<const char*>(data + 1), int(size - 1));
    QString declarations;
    for (int i = 0; i < TavoStyleAttributeCount; ++i)
        declarations += CTavoWidgetStyle::name(TavoWidgetStyleAttributeNames(i)) + ": " + value + ";";
    declarations += "x-effect: " + value + ";";
    CTavoWidgetStyle style;
    style.set(declarations);
    QObject parent;
    style.GraphicsEffect(QStringLiteral("x-effect"), &parent);
    style.contentRect(QRect(0, 0, 50, 50));
    style.Int("color");
    style.Size("font");
    style.AnimationPtr("animation", &parent);
    CTavoWidgetStyle::scaleStylesheet(value);
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
