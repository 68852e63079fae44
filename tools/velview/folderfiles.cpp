#include "folderfiles.h"

#include <algorithm>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Atelier::Vel::Viewer {

namespace {

// The digits of `text` from `at` on, without leading zeros. Moves `at` behind them.
QString takeNumber(const QString& text, int& at) {
    while (at < text.size() - 1 && text[at] == QLatin1Char('0') && text[at + 1].isDigit())
        ++at;
    const int start = at;
    while (at < text.size() && text[at].isDigit())
        ++at;
    return text.mid(start, at - start);
}

// QCollator counts only where the system knows the locale.
bool isBefore(const QString& one, const QString& other) {
    int i = 0;
    int j = 0;
    while (i < one.size() && j < other.size()) {
        if (one[i].isDigit() && other[j].isDigit()) {
            const QString first = takeNumber(one, i);
            const QString second = takeNumber(other, j);
            if (first != second)
                return first.size() != second.size() ? first.size() < second.size() : first < second;
            continue;
        }
        const QChar first = one[i++].toLower();
        const QChar second = other[j++].toLower();
        if (first != second)
            return first < second;
    }
    const bool isShorter = one.size() - i < other.size() - j;
    return isShorter || (one.size() - i == other.size() - j && one < other);
}

} // namespace

QString neighbourOf(const QString& path, int steps) {
    const QFileInfo file(path);
    QStringList names = file.dir().entryList({QStringLiteral("*.obj")}, QDir::Files);
    if (!names.contains(file.fileName()))
        names.append(file.fileName());
    if (names.size() < 2)
        return {};
    std::sort(names.begin(), names.end(), isBefore);
    const int count = names.size();
    const int place = (names.indexOf(file.fileName()) + steps % count + count) % count;
    return file.dir().filePath(names[place]);
}

} // namespace Atelier::Vel::Viewer
