// Flyout documents from an untrusted core, and the keys and touches that
// follow. The document goes through the document library into a styled
// flyout, which is opened, driven by digits, arrows, Select and touches, and
// closed; the event it sends is read back. What must hold besides surviving:
// never more rows than the maximum, the focus on a row that can be chosen,
// and a closed flyout after a choice.
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>

#include <cstdint>
#include <cstdlib>

#include "CTXMLEvent.h"
#include "CTXMLRoot.h"
#include "layout/CTXMLDataConverter.h"
#include "layout/CTavoEvent.h"
#include "widgets/CTavoFlyoutCluster.h"
#include "widgets/CTavoFlyoutItem.h"

namespace {

void check(bool condition)
{
    if (!condition)
        std::abort();
}

struct World
{
    QWidget screen;
    CTavoFlyoutCluster* flyout = nullptr;
    CTXMLRoot root;
    QString lastUrl;
    QString lastData;

    World()
    {
        screen.resize(800, 480);
        screen.show();
        flyout = new CTavoFlyoutCluster(&screen);
        QByteArray style = "CTavoFlyoutCluster { size: 320x300; location: 0:0; items-offset-y: 40; items-maximum: 12; }"
                           " CTavoFlyoutItem { size: 300x30; }"
                           " CTavoFlyoutItem#flyout-group-div-item { size: 300x2; }";
        QByteArray none;
        flyout->updateStyle(style.data(), none.data(), true);
        // No banner: its markup would need the web engine, which is not what is tested here.
        flyout->setShowInfoBanner(false);
        QObject::connect(flyout, &CTavoLayoutWidget::layoutWidgetSignal,
                         [this](QString url, QString data, int) {
                             lastUrl = url;
                             lastData = data;
                         });
    }
};

World* world()
{
    static int argc = 1;
    static char name[] = "fuzz_flyout";
    static char* argv[] = {name, nullptr};
    static QApplication* app = nullptr;
    if (!app) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        app = new QApplication(argc, argv);
    }
    static World* instance = new World;
    return instance;
}

void key(QWidget* target, int code, bool press)
{
    QKeyEvent event(press ? QEvent::KeyPress : QEvent::KeyRelease, code, Qt::KeypadModifier);
    QCoreApplication::sendEvent(target, &event);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    World* w = world();
    CTavoFlyoutCluster* flyout = w->flyout;
    // The last bytes steer the keys and touches; the rest is the document.
    const size_t steer = size < 8 ? size : 8;
    const char* bytes = reinterpret_cast<const char*>(data);
    w->root.parse(bytes, size - steer);
    CTXMLFlyoutCluster content = w->root.flyout;
    flyout->init(&content);
    check(flyout->numOfVisibleItems() <= qMin(content.count(), 12));

    flyout->flyOut();
    for (size_t i = size - steer; i < size && flyout->isOpen(); ++i) {
        const unsigned char b = static_cast<unsigned char>(bytes[i]);
        switch (b % 5) {
        case 0:
            key(flyout, Qt::Key_0 + (b / 5) % 10, true);
            key(flyout, Qt::Key_0 + (b / 5) % 10, false);
            break;
        case 1:
            key(flyout, (b & 8) ? Qt::Key_Up : Qt::Key_Down, true);
            key(flyout, (b & 8) ? Qt::Key_Up : Qt::Key_Down, false);
            break;
        case 2: {
            const QPoint at(b % 320, b + 20);
            QMouseEvent press(QEvent::MouseButtonPress, at, flyout->mapToGlobal(at), Qt::LeftButton,
                              Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(flyout, &press);
            QMouseEvent release(QEvent::MouseButtonRelease, at, flyout->mapToGlobal(at), Qt::LeftButton,
                                Qt::NoButton, Qt::NoModifier);
            QCoreApplication::sendEvent(flyout, &release);
            break;
        }
        case 3:
            key(flyout, Qt::Key_Return, true);
            key(flyout, Qt::Key_Return, false);
            break;
        default:
            flyout->pickItem(int(b) - 128);
            flyout->performQuickAccess(int(b % 12) - 1, QEvent::KeyPress);
            break;
        }
        if (CTavoFlyoutItem* focused = flyout->item(flyout->focusedIndex())) {
            if (focused->isFocused())
                check(!focused->isGroupDiv());
        }
    }
    if (flyout->isOpen())
        flyout->flyIn(false, CTavoFlyoutCluster::FlyinByKey);
    check(!flyout->isOpen() && !flyout->isVisible());

    // The last report as an event of the document language and back.
    const CTavoEvent event(CTavoEvent::NoEvent, w->lastUrl, w->lastData);
    const CTXMLEvent txml = event.toTXML();
    CTXMLEvent copy = txml;
    const CTavoEvent back(copy, CTavoEvent::NoEvent);
    check(back.url() == QString::fromLatin1(txml.uri));
    // The conversions on the document's text.
    const QString text = QString::fromUtf8(w->root.data);
    CTXMLDataConverter::decodeEscapeSequenceCharaters(text);
    check(CTXMLDataConverter::setT9Data(text).size() <= text.size());
    CTXMLDataConverter::isNumber(text);
    CTXMLDataConverter::isConvertibleToT9E164(text);
    CTXMLDataConverter::getInputModeFromXml(w->root.uri);
    return 0;
}
