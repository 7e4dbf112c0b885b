// Keystroke to repaint in a text field with a 512-byte limit holding 400
// characters: a character inserted at the end, a Backspace, a mode switch,
// each followed by painting the field. Our CTavoInput against a bare
// QLineEdit with setMaxLength(512) and a QRegularExpressionValidator, whose
// "mode switch" is a change of validator. Prints microseconds and heap
// allocations per keystroke, side by side.
//
// Allocations are counted by the malloc interposer of BenchSupport; under
// AddressSanitizer they read "n/a".
#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QKeyEvent>
#include <QLineEdit>
#include <QRegularExpression>
#include <QRegularExpressionValidator>

#include <cstdio>
#include <functional>

#include "BenchSupport.h"

#include "input/CTavoInput.h"
#include "layout/CTavoLayoutWidget.h"

namespace {
const int kWarm = 50;
const int kRounds = 2000;
const int kPrefill = 400;
const int kLimit = 512;

// Each round starts from the same text: undo runs outside the counted window.
using Figure = BenchStep;

Figure measure(const std::function<void()>& step, const std::function<void()>& undo)
{
    return benchSteps(kWarm, kRounds, step, undo);
}

void print(const char* what, const Figure& ours, const Figure& theirs, bool counted)
{
    if (counted)
        std::printf("%-30s %10.1f %10.1f   %10.1f %10.1f\n", what, ours.micros, ours.allocations, theirs.micros,
                    theirs.allocations);
    else
        std::printf("%-30s %10.1f %10s   %10.1f %10s\n", what, ours.micros, "n/a", theirs.micros, "n/a");
}
}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    // A log client drops the field's detail lines by level; printing them here
    // would measure the terminal.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QFont font = benchFont(20);
    const QString prefill(kPrefill, QLatin1Char('x'));

    // Ours: a field on a surface, focused, as a screen has it.
    CTavoLayoutWidget surface;
    surface.resize(480, 80);
    CTavoInput* field = new CTavoInput(&surface);
    field->setFont(font);
    field->setGeometry(10, 10, 460, 44);
    field->set("Abc;abc;123", prefill, kLimit, QLineEdit::Normal, "");
    surface.show();
    QApplication::setActiveWindow(&surface);
    field->setFocus(Qt::TabFocusReason);
    QApplication::processEvents();

    // Theirs: the bare editor with the same limit in characters and a validator.
    QWidget plainSurface;
    plainSurface.resize(480, 80);
    QLineEdit* plain = new QLineEdit(&plainSurface);
    plain->setFont(font);
    plain->setGeometry(10, 10, 460, 44);
    plain->setMaxLength(kLimit);
    QRegularExpressionValidator letters(QRegularExpression(QStringLiteral("[\\x20-\\x7e]*")));
    QRegularExpressionValidator digits(QRegularExpression(QStringLiteral("[0-9x]*")));
    plain->setValidator(&letters);
    plain->setText(prefill);
    plainSurface.show();

    QImage ours(field->size(), QImage::Format_RGB32);
    QImage theirs(plain->size(), QImage::Format_RGB32);
    auto paintOurs = [&] { field->render(&ours); };
    auto paintTheirs = [&] { plain->render(&theirs); };
    paintOurs();
    paintTheirs();

    // Ours first, with its window active and the field focused.
    field->end(false);
    const Figure insertOurs = measure([&] { benchKey(field, Qt::Key_A, QStringLiteral("a")); paintOurs(); },
                                      [&] { benchKey(field, Qt::Key_Backspace, QString()); });
    const Figure backOurs = measure([&] { benchKey(field, Qt::Key_Backspace, QString()); paintOurs(); },
                                    [&] { benchKey(field, Qt::Key_X, QStringLiteral("x")); });
    bool lower = false;
    const Figure modeOurs = measure(
        [&] {
            field->switchToMode(lower ? QStringLiteral("Abc") : QStringLiteral("abc"));
            lower = !lower;
            paintOurs();
        },
        [] {});
    const Figure paintOnlyOurs = measure(paintOurs, [] {});
    const bool oursFocused = field->hasFocus();

    // Then the bare editor, focused in its own active window.
    QApplication::setActiveWindow(&plainSurface);
    plain->setFocus(Qt::TabFocusReason);
    QApplication::processEvents();
    plain->end(false);
    const Figure insertTheirs = measure([&] { benchKey(plain, Qt::Key_A, QStringLiteral("a")); paintTheirs(); },
                                        [&] { benchKey(plain, Qt::Key_Backspace, QString()); });
    const Figure backTheirs = measure([&] { benchKey(plain, Qt::Key_Backspace, QString()); paintTheirs(); },
                                      [&] { benchKey(plain, Qt::Key_X, QStringLiteral("x")); });
    bool numeric = false;
    const Figure modeTheirs = measure(
        [&] {
            plain->setValidator(numeric ? &letters : &digits);
            numeric = !numeric;
            paintTheirs();
        },
        [] {});
    const Figure paintOnlyTheirs = measure(paintTheirs, [] {});
    const bool theirsFocused = plain->hasFocus();

    const bool sane = field->text() == prefill && plain->text() == prefill && oursFocused && theirsFocused;
    const bool counted = kBenchCounted;
    std::printf("bench_input: keystroke to repaint, a field of %d bytes holding %d characters, %d rounds after %d\n",
                kLimit, kPrefill, kRounds, kWarm);
    std::printf("%-30s %21s   %21s\n", "", "CTavoInput", "QLineEdit+validator");
    std::printf("%-30s %10s %10s   %10s %10s\n", "", "us", "allocs", "us", "allocs");
    print("insert at the end + paint", insertOurs, insertTheirs, counted);
    print("backspace + paint", backOurs, backTheirs, counted);
    print("mode switch + paint", modeOurs, modeTheirs, counted);
    print("paint alone", paintOnlyOurs, paintOnlyTheirs, counted);
    std::printf("both focused, texts unchanged after the runs: %s\n", sane ? "yes" : "NO");
    return sane ? 0 : 1;
}
