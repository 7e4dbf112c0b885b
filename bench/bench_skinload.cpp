// Loading a large skin: our reader against expat alone on the same file, and the
// cost of one style look-up by object and pseudo state.
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <dlfcn.h>
#include <expat.h>

#include "style/CTavoStyleSheet.h"
#include "style/CTavoStyleSheetFile.h"

namespace {
const int Blocks = 2000;
const int Declarations = 10;

QByteArray generateSkin()
{
    static const char* const values[Declarations] = {
        "color: rgb(10, 20, 30)", "font: bold 16px DejaVu Sans", "size: 120x40", "location: 10:20",
        "padding: 4 8", "border: 1px solid #334455", "text-align: hcenter vcenter",
        "background: rgba(255, 255, 255, 24)", "up-duration: 200", "label-color: #ffffff"};
    QByteArray xml = "<?xml version='1.0' encoding='UTF-8'?>\n<Skin>\n <Item>\n  <Name>manager</Name>\n"
                     "  <Attributes>design-x=800;design-y=480;max-x=800;max-y=480</Attributes>\n  <Style>\n";
    for (int b = 0; b < Blocks; ++b) {
        xml += "   CTavoButton#button" + QByteArray::number(b) + " {\n";
        for (int d = 0; d < Declarations; ++d)
            xml += QByteArray("     ") + values[d] + ";\n";
        xml += "   }\n";
    }
    xml += "  </Style>\n </Item>\n</Skin>\n";
    return xml;
}

void XMLCALL noStart(void*, const char*, const char**) {}
void XMLCALL noEnd(void*, const char*) {}
void XMLCALL noText(void*, const char*, int) {}

class Probe : public QObject
{
};

// expat is the library's own dependency: take its entry points from the loaded
// process rather than linking the benchmark against it a second time.
struct ExpatT
{
    decltype(&XML_ParserCreate) create;
    decltype(&XML_SetElementHandler) setElementHandler;
    decltype(&XML_SetCharacterDataHandler) setCharacterDataHandler;
    decltype(&XML_Parse) parse;
    decltype(&XML_ParserFree) free;
};

template <typename T> T symbol(void* handle, const char* name)
{
    return reinterpret_cast<T>(dlsym(handle, name));
}

bool loadExpat(ExpatT& e)
{
    void* handle = dlopen("libexpat.so.1", RTLD_NOW | RTLD_NOLOAD);
    if (!handle)
        handle = dlopen("libexpat.so.1", RTLD_NOW);
    if (!handle)
        return false;
    e.create = symbol<decltype(e.create)>(handle, "XML_ParserCreate");
    e.setElementHandler = symbol<decltype(e.setElementHandler)>(handle, "XML_SetElementHandler");
    e.setCharacterDataHandler = symbol<decltype(e.setCharacterDataHandler)>(handle, "XML_SetCharacterDataHandler");
    e.parse = symbol<decltype(e.parse)>(handle, "XML_Parse");
    e.free = symbol<decltype(e.free)>(handle, "XML_ParserFree");
    return e.create && e.setElementHandler && e.setCharacterDataHandler && e.parse && e.free;
}
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    ExpatT expat;
    if (!loadExpat(expat)) {
        fprintf(stderr, "libexpat.so.1 not found\n");
        return 1;
    }
    QTemporaryDir dir;
    const QString path = dir.filePath("big.xml");
    {
        QFile f(path);
        f.open(QIODevice::WriteOnly);
        f.write(generateSkin());
    }
    const int rounds = 15;
    qint64 bestExpat = -1, bestFile = -1, bestSheet = -1;
    for (int r = 0; r < rounds; ++r) {
        QElapsedTimer t;
        t.start();
        {
            // expat alone: read the file and run the parser with empty callbacks.
            QFile f(path);
            f.open(QIODevice::ReadOnly);
            const QByteArray content = f.readAll();
            XML_Parser parser = expat.create("UTF-8");
            expat.setElementHandler(parser, noStart, noEnd);
            expat.setCharacterDataHandler(parser, noText);
            expat.parse(parser, content.constData(), content.size(), 1);
            expat.free(parser);
        }
        const qint64 expatNs = t.nsecsElapsed();

        t.restart();
        CTavoStyleSheetFile file;
        file.parse(path);
        const qint64 fileNs = t.nsecsElapsed();

        t.restart();
        CTavoStyleSheet sheet;
        const CTavoStyleItem* item = file.get("manager");
        sheet.set(item->m_style.toLatin1().constData(), item->m_attributes.toLatin1().constData());
        const qint64 sheetNs = t.nsecsElapsed();
        if (sheet.styles().size() != Blocks)
            fprintf(stderr, "unexpected block count %d\n", int(sheet.styles().size()));
        if (bestExpat < 0 || expatNs < bestExpat)
            bestExpat = expatNs;
        if (bestFile < 0 || fileNs < bestFile)
            bestFile = fileNs;
        if (bestSheet < 0 || sheetNs < bestSheet)
            bestSheet = sheetNs;
    }
    printf("skin: %d blocks x %d declarations, %lld bytes; best of %d\n", Blocks, Declarations,
           static_cast<long long>(QFileInfo(path).size()), rounds);
    printf("  expat alone (read + parse)        %9.3f ms\n", bestExpat / 1e6);
    printf("  CTavoStyleSheetFile::parse        %9.3f ms  (%.2fx expat)\n", bestFile / 1e6,
           double(bestFile) / double(bestExpat));
    printf("  CTavoStyleSheet::set (typed)      %9.3f ms  (%.2fx expat)\n", bestSheet / 1e6,
           double(bestSheet) / double(bestExpat));
    printf("  file + sheet, whole load          %9.3f ms  (%.2fx expat)\n", (bestFile + bestSheet) / 1e6,
           double(bestFile + bestSheet) / double(bestExpat));

    // Look-up: a named object in a pseudo state that only its class block answers
    // (four map searches) and one whose own block answers at once.
    CTavoStyleSheetFile file;
    file.parse(path);
    CTavoStyleSheet sheet;
    sheet.set(file.getStyle("manager").toLatin1().constData(), file.getAttributes("manager").toLatin1().constData());
    Probe fallThrough;
    fallThrough.setObjectName("nobody");
    Probe direct;
    const int lookups = 200000;
    QElapsedTimer t;
    t.start();
    int hits = 0;
    for (int i = 0; i < lookups; ++i)
        hits += sheet.get(&fallThrough, QStringLiteral("pressed")) ? 1 : 0;
    const qint64 slowNs = t.nsecsElapsed();
    t.restart();
    for (int i = 0; i < lookups; ++i)
        hits += sheet.get(&direct, QString()) ? 1 : 0;
    const qint64 fastNs = t.nsecsElapsed();
    CTavoStyleSheet named;
    // Probe has no meta-object of its own: its class name is "QObject".
    named.set("QObject#x:pressed { color: red; }", "");
    direct.setObjectName("x");
    t.restart();
    for (int i = 0; i < lookups; ++i)
        hits += named.get(&direct, QStringLiteral("pressed")) ? 1 : 0;
    const qint64 firstNs = t.nsecsElapsed();
    printf("get(object, pseudoState), %d calls each (%d hits; the misses search a sheet of %d blocks)\n", lookups, hits, Blocks);
    printf("  first key hits                    %9.1f ns/call\n", double(firstNs) / lookups);
    printf("  miss, walk to QObject (unnamed)   %9.1f ns/call\n", double(fastNs) / lookups);
    printf("  named + pseudo, all keys missed   %9.1f ns/call\n", double(slowNs) / lookups);
    return 0;
}
