#pragma once

#include <QtCore/QStringList>
#include <QtCore/QTextStream>

#include "import/text/linesource.h"

/// The lines of a text, from a line source and from the stream that it has to agree with.
namespace Atelier::Vel::Testing {

inline QStringList linesOf(LineSource& source) {
    QStringList lines;
    while (source.next())
        lines << source.text(source.begin(), source.end());
    return lines;
}

inline QStringList linesOf(QTextStream& stream) {
    QStringList lines;
    while (!stream.atEnd())
        lines << stream.readLine();
    return lines;
}

/// If bytes without a character remain, a stream has one empty line more or less at its end.
inline QStringList withoutEmptyEnd(QStringList lines) {
    while (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

} // namespace Atelier::Vel::Testing
