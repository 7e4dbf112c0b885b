// The bare program of bench_footprint: a Qt Widgets window with the texts of
// zedagui's home screen in QLabels and its HTML rendered once through a QWebPage
// ("--no-web": as a plain QLabel instead). It links Qt alone, not the toolkit,
// and reports like the toolkit's child: "--attribute" charges the heap by user.
#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QTime>
#include <QTimer>
#include <QWebFrame>
#include <QWebPage>
#include <QWidget>

#include <cstring>
#include <functional>

#include "FootprintSupport.h"

namespace {

// The bare program's window: notes its first frame.
class BareWindow : public QWidget
{
public:
    qint64 firstFrame = -1;
    std::function<void()> onFirstFrame;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QWidget::paintEvent(event);
        if (firstFrame < 0) {
            firstFrame = footprintMsSinceProcessStart();
            QTimer::singleShot(0, this, onFirstFrame);
        }
    }
};

int runBare(bool web, bool attributed)
{
    static int argc = 1;
    static char name[] = "footprint_bare";
    static char* argv[] = {name, nullptr};
    QApplication app(argc, argv);
    if (attributed)
        footprintStartAttribution();
    BareWindow window;
    window.resize(800, 480);
    QPalette palette = window.palette();
    palette.setColor(QPalette::Window, QColor(12, 28, 60));
    palette.setColor(QPalette::WindowText, Qt::white);
    window.setPalette(palette);
    window.setAutoFillBackground(true);
    int y = 10;
    for (const char* text : kFootprintTexts) {
        auto* label = new QLabel(QString::fromLatin1(text), &window);
        label->setGeometry(20, y, 300, 24);
        y += 40;
    }
    auto* clock = new QLabel(QTime::currentTime().toString(QStringLiteral("h:mm AP")), &window);
    clock->setGeometry(700, 10, 90, 24);
    auto* intro = new QLabel(&window);
    intro->setGeometry(20, y, 760, 40);
    QWebPage* page = nullptr;
    if (web) {
        page = new QWebPage;
        page->setViewportSize(QSize(760, 1));
        page->mainFrame()->setHtml(QString::fromLatin1(kFootprintIntro));
        const QSize size = page->mainFrame()->contentsSize();
        page->setViewportSize(size);
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        page->mainFrame()->render(&painter);
        painter.end();
        intro->setPixmap(QPixmap::fromImage(image));
    } else {
        intro->setText(QStringLiteral("Connected to the core \u00b7 Directory offline"));
    }
    window.onFirstFrame = [&] {
        QTimer::singleShot(1100, &window, [&] {
            footprintReport(window.firstFrame);
            app.quit();
        });
    };
    window.show();
    const int code = app.exec();
    delete page;
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    bool web = true;
    bool attributed = false;
    for (int i = 1; i < argc; ++i) {
        web = web && std::strcmp(argv[i], "--no-web") != 0;
        attributed = attributed || std::strcmp(argv[i], "--attribute") == 0;
    }
    return runBare(web, attributed);
}
