// One keystroke in each editing mode on a full field: the field holds one byte
// less than its limit of 512 (the IP field its 15), the key makes it full, and
// the text is put back outside the counted window. Our CTavoInput, with the
// mode's rules on the dial pad key, against a bare QLineEdit with the same
// limit in characters and a validator for the same characters. Then the
// magnifying glass under a finger moved 20 times a second: each pointer move
// and each 50 ms filter step, against a glass that renders its source anew
// for every move. Microseconds and heap allocations per event.
//
// Allocations are counted by the malloc interposer of BenchSupport; under
// AddressSanitizer they read "n/a".
#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QRegularExpression>
#include <QRegularExpressionValidator>
#include <QTimer>

#include <cstdio>
#include <functional>

#include "BenchSupport.h"

#include "input/CTavoInput.h"
#include "layout/CTavoLayoutWidget.h"
#include "widgets/CTavoMagnifyingGlass.h"

namespace {
const int kWarm = 50;
const int kRounds = 2000;
const int kLimit = 512;

using Figure = BenchStep;

Figure measure(const std::function<void()>& step, const std::function<void()>& undo)
{
    return benchSteps(kWarm, kRounds, step, undo);
}

void row(const char* what, const Figure& ours, const Figure& theirs)
{
    if (kBenchCounted)
        std::printf("%-34s %9.1f %8.1f   %9.1f %8.1f\n", what, ours.micros, ours.allocations, theirs.micros,
                    theirs.allocations);
    else
        std::printf("%-34s %9.1f %8s   %9.1f %8s\n", what, ours.micros, "n/a", theirs.micros, "n/a");
}

// A field that times the events of the magnifier as they come.
class TimedField : public CTavoInput
{
public:
    using CTavoInput::CTavoInput;
    Figure moves;
    Figure steps;
    int moveCount = 0;
    int stepCount = 0;

protected:
    bool event(QEvent* e) override
    {
        const bool move = e->type() == QEvent::MouseMove;
        const bool step = e->type() == QEvent::Timer && isMagnifierTimerRunning();
        if (!move && !step)
            return CTavoInput::event(e);
        const long long before = g_allocations.load();
        QElapsedTimer timer;
        timer.start();
        const bool result = CTavoInput::event(e);
        Figure& f = move ? moves : steps;
        f.micros += timer.nsecsElapsed() / 1000.0;
        f.allocations += double(g_allocations.load() - before);
        ++(move ? moveCount : stepCount);
        return result;
    }
};

struct Mode
{
    const char* name;
    const char* modes;
    const char* params;
    QString prefill;
    Qt::Key key;
    QString text;
    Qt::KeyboardModifiers modifiers;
    const char* validator;
    const char* mask;
    int limit;
};
}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QFont font = benchFont(20);
    const QString letters(kLimit - 1, QLatin1Char('x'));
    const QString digits(kLimit - 1, QLatin1Char('7'));

    const Mode modes[] = {
        {"abc: letter from a keyboard", "abc", "", letters, Qt::Key_A, "a", Qt::NoModifier, "[\\x20-\\x7e]*", "", kLimit},
        {"abc: two bytes, one too many", "abc", "", letters, Qt::Key_unknown, QString::fromUtf8("é"), Qt::NoModifier,
         "[\\x20-\\x7e\\x{e9}]*", "", kLimit},
        {"123: digit after \"1.111...\"", "123;abc", "", QStringLiteral("1.") + QString(kLimit - 3, QLatin1Char('1')),
         Qt::Key_5, "5", Qt::KeypadModifier, "-?[0-9.]*", "", kLimit},
        // 512 digits are no double (nor is 0.000...05): the rule refuses the digit.
        {"123: digit refused (no double)", "123;abc", "", digits, Qt::Key_5, "5", Qt::KeypadModifier, "-?[0-9.]*", "",
         kLimit},
        {"123: digit over the maximum", "123", "min=0;max=50000", QStringLiteral("9999"), Qt::Key_9, "9",
         Qt::KeypadModifier, "[0-9]*", "", kLimit},
        {"Hex: dial pad digit", "Hex", "", letters.left(kLimit - 1).replace('x', 'a'), Qt::Key_7, "7",
         Qt::KeypadModifier, "[0-9a-fA-F.:/\\[\\]]*", "", kLimit},
        {"URL: dial pad digit", "URL", "", letters, Qt::Key_7, "7", Qt::KeypadModifier, "[\\x20-\\x7e]*", "", kLimit},
        {"Tel: dial pad digit", "Tel", "", digits, Qt::Key_7, "7", Qt::KeypadModifier, "[0-9*#+]*", "", kLimit},
        {"IP: digit in the last group", "IP", "", QStringLiteral("192.168.001.02"), Qt::Key_5, "5", Qt::KeypadModifier,
         "[0-9. ]*", "000.000.000.000;_", 15},
    };

    CTavoLayoutWidget surface;
    surface.resize(480, 80);
    CTavoInput* field = new CTavoInput(&surface);
    field->setFont(font);
    field->setGeometry(10, 10, 460, 44);
    QWidget plainSurface;
    plainSurface.resize(480, 80);
    QLineEdit* plain = new QLineEdit(&plainSurface);
    plain->setFont(font);
    plain->setGeometry(10, 10, 460, 44);
    surface.show();
    plainSurface.show();

    std::printf("bench_editing: one keystroke on a full field (%d bytes; IP 15), %d rounds after %d\n", kLimit, kRounds,
                kWarm);
    std::printf("%-34s %18s   %18s\n", "", "CTavoInput", "QLineEdit+validator");
    std::printf("%-34s %9s %8s   %9s %8s\n", "", "us", "allocs", "us", "allocs");
    bool sane = true;
    for (const Mode& m : modes) {
        field->set(m.modes, QString(), m.limit, QLineEdit::Normal, m.params);
        QApplication::setActiveWindow(&surface);
        field->setFocus(Qt::TabFocusReason);
        auto resetOurs = [&] {
            field->setText(m.prefill);
            field->setCursorPosition(m.prefill.size());
        };
        resetOurs();
        const Figure ours = measure([&] { benchKey(field, m.key, m.text, m.modifiers); }, resetOurs);
        benchKey(field, m.key, m.text, m.modifiers);
        const QString after = field->text();
        sane = sane && field->text().toUtf8().size() <= m.limit;

        QRegularExpressionValidator validator{QRegularExpression(QString::fromUtf8(m.validator))};
        plain->setValidator(nullptr);
        plain->setInputMask(QString::fromLatin1(m.mask));
        plain->setMaxLength(m.limit);
        plain->setValidator(&validator);
        QApplication::setActiveWindow(&plainSurface);
        plain->setFocus(Qt::TabFocusReason);
        auto resetTheirs = [&] {
            plain->setText(m.prefill);
            plain->setCursorPosition(m.prefill.size());
        };
        resetTheirs();
        const Figure theirs = measure([&] { benchKey(plain, m.key, m.text, m.modifiers); }, resetTheirs);
        plain->setValidator(nullptr);
        row(m.name, ours, theirs);
        std::printf("%-34s -> %d bytes: \"%s\"\n", "", after.toUtf8().size(),
                    after.size() > 24 ? qPrintable("..." + after.right(12)) : qPrintable(after));
    }

    // The glass under a finger moved 20 times a second for 3 s.
    field->set("abc", letters.left(40), kLimit, QLineEdit::Normal, "");
    auto* timed = new TimedField(&surface);
    timed->setFont(font);
    timed->setGeometry(10, 30, 460, 44);
    timed->set("abc", QStringLiteral("The text under the finger, magnified"), kLimit, QLineEdit::Normal, "");
    QImage mask(300, 100, QImage::Format_ARGB32);
    mask.fill(Qt::white);
    CTavoMagnifyingGlass* glass = timed->magnifyingGlass();
    glass->setMagFactor(1.6f);
    glass->setMagGlassMask(mask);
    surface.resize(480, 200);
    timed->move(10, 130);
    QApplication::setActiveWindow(&surface);
    timed->setFocus(Qt::TabFocusReason);
    auto send = [&](QEvent::Type type, int x, Qt::MouseButtons buttons) {
        const QPointF at(x, 20);
        QMouseEvent e(type, at, timed->mapToGlobal(at.toPoint()),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons, Qt::NoModifier);
        QApplication::sendEvent(timed, &e);
    };
    send(QEvent::MouseButtonPress, 20, Qt::LeftButton);
    timed->moves = timed->steps = Figure();
    timed->moveCount = timed->stepCount = 0;
    int x = 20;
    QTimer mover;
    mover.setInterval(50);
    QObject::connect(&mover, &QTimer::timeout, [&] {
        x = x >= 400 ? 20 : x + 13;
        send(QEvent::MouseMove, x, Qt::LeftButton);
    });
    mover.start();
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 3000)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    mover.stop();
    const bool glassUp = glass->isVisible();
    send(QEvent::MouseButtonRelease, x, Qt::NoButton);

    // Theirs: the same strip made by rendering the source for every move.
    QImage cache(timed->size() * 1.6, QImage::Format_ARGB32_Premultiplied);
    QImage strip(glass->size(), QImage::Format_ARGB32);
    int naiveX = 20;
    const Figure naive = measure(
        [&] {
            naiveX = naiveX >= 400 ? 20 : naiveX + 13;
            cache.fill(0x808080);
            {
                QPainter p(&cache);
                p.scale(1.6, 1.6);
                timed->render(&p, QPoint(), QRegion(), QWidget::DrawWindowBackground | QWidget::DrawChildren);
            }
            strip.fill(0x80808080);
            QPainter p(&strip);
            p.drawImage(QPointF(strip.width() / 2 - 1.6 * naiveX, 0), cache);
            p.setCompositionMode(QPainter::CompositionMode_DestinationIn);
            p.drawImage(0, 0, mask.scaled(strip.size()));
        },
        [] {});

    const Figure perMove{timed->moves.micros / qMax(1, timed->moveCount),
                         timed->moves.allocations / qMax(1, timed->moveCount)};
    const Figure perStep{timed->steps.micros / qMax(1, timed->stepCount),
                         timed->steps.allocations / qMax(1, timed->stepCount)};
    std::printf("\nmagnifier: a finger moved 20 times a second for 3 s (%d moves, %d filter steps)\n", timed->moveCount,
                timed->stepCount);
    std::printf("%-34s %18s   %18s\n", "", "CTavoInput+glass", "render per move");
    row("pointer move (glass up)", perMove, naive);
    row("50 ms filter step (re-show)", perStep, naive);
    const bool magnified = glassUp && timed->moveCount >= 50 && timed->stepCount >= 50;
    std::printf("glass up during the moves: %s\n", magnified ? "yes" : "NO");
    return sane && magnified ? 0 : 1;
}
