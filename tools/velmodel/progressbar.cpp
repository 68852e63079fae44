#include "progressbar.h"

#include <algorithm>
#include <cstdio>

#include <unistd.h>

#include <QtCore/QFileInfo>

#include "console.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr int kWidth = 78;
constexpr int kCells = 30;

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
    const double share = total > 0 ? std::clamp(double(done) / double(total), 0.0, 1.0) : 1.0;
    const QString bar = QString(int(share * kCells), QLatin1Char('#')).leftJustified(kCells);
    const QString percent = QString::number(int(share * 100)).rightJustified(3);
    return QStringLiteral("[%1] %2 % %3").arg(bar, percent, onOneLine(name)).left(width);
}

ProgressBar::ProgressBar(const QString& path, qint64 fileSize)
    : _name(QFileInfo(path).fileName()), _isActive(fileSize >= kSmallestFile && isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar() {
    if (!_shown.isEmpty())
        print(QLatin1Char('\r') + QString(_shown.size(), QLatin1Char(' ')) + QLatin1Char('\r'));
}

void ProgressBar::show(const LoadStep& step) {
    if (!_isActive)
        return;
    const QString name = QStringLiteral("%1: %2").arg(_name, nameOf(step.phase));
    // The spaces overwrite the rest of a longer line.
    const QString line = progressLine(name, step.done, step.total, kWidth).leftJustified(_shown.size());
    if (line == _shown)
        return;
    print(QLatin1Char('\r') + line);
    _shown = line;
}

} // namespace Atelier::Vel::Tool
