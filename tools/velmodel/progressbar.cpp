#include "progressbar.h"

#include <algorithm>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

#include <QtCore/QFileInfo>

#include "console.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr int kMaxWidth = 78;
constexpr int kMaxCells = 30;
// What a line has beside the bar and the name: the brackets, the percentage and the spaces.
constexpr int kOtherColumns = 9;

// The last column stays free: terminals that have written to it differ in where they continue.
int lineWidth() {
    winsize window = {};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 0;
    return isKnown ? std::min(window.ws_col - 1, kMaxWidth) : kMaxWidth;
}

QString nameOf(LoadPhase phase) {
    switch (phase) {
    case LoadPhase::Reading:
        return QStringLiteral("reading");
    case LoadPhase::Merging:
        return QStringLiteral("merging vertices");
    case LoadPhase::Triangulating:
        return QStringLiteral("triangulating");
    case LoadPhase::MakingNormals:
        return QStringLiteral("making normals");
    case LoadPhase::Optimising:
        return QStringLiteral("optimising");
    }
    return QString();
}

void print(const QString& text) {
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

} // namespace

QString progressLine(const QString& name, qint64 done, qint64 total, int width) {
    const int cells = std::clamp(width / 2 - kOtherColumns, 0, kMaxCells);
    const double share = total > 0 ? std::clamp(double(done) / double(total), 0.0, 1.0) : 1.0;
    const QString bar = QString(int(share * cells), QLatin1Char('#')).leftJustified(cells);
    const QString percent = QString::number(int(share * 100)).rightJustified(3);
    return QStringLiteral("[%1] %2 % %3").arg(bar, percent, onOneLine(name)).left(width);
}

ProgressBar::ProgressBar(const QString& path, qint64 fileSize)
    : _name(QFileInfo(path).fileName()), _isActive(fileSize >= kSmallestFile && isatty(STDERR_FILENO) == 1) {}

ProgressBar::ProgressBar(const QString& path, Delay delay)
    : _name(QFileInfo(path).fileName()), _isActive(isatty(STDERR_FILENO) == 1), _delay(delay.milliseconds) {
    _timer.start();
}

ProgressBar ProgressBar::after(int milliseconds, const QString& path) {
    return {path, Delay{milliseconds}};
}

ProgressBar::~ProgressBar() {
    if (!_shown.isEmpty())
        print(QLatin1Char('\r') + QString(_shown.size(), QLatin1Char(' ')) + QLatin1Char('\r'));
}

void ProgressBar::show(const LoadStep& step) {
    show(nameOf(step.phase), step.done, step.total);
}

void ProgressBar::show(const QString& what, qint64 done, qint64 total) {
    if (!_isActive || (_delay > 0 && _timer.elapsed() < _delay))
        return;
    const QString name = QStringLiteral("%1: %2").arg(_name, what);
    // The spaces overwrite the rest of a longer line.
    const int width = lineWidth();
    const QString line = progressLine(name, done, total, width).leftJustified(std::min(_shown.size(), width));
    if (line == _shown)
        return;
    print(QLatin1Char('\r') + line);
    _shown = line;
}

} // namespace Atelier::Vel::Tool
