#pragma once

#include <QtCore/QString>

namespace Atelier::Vel::Tool {

/// `text` with control and format characters escaped, so that a terminal shows all of it and obeys none.
QString printable(const QString& text);

/// A part of a line of a file as a terminal shows it.
struct SourceLine {
    QString text;
    /// The number of terminal columns before the mark; -1 for no mark.
    int mark = -1;
};

/// Prepares the line `text`, which begins at column `first` of its file, for a mark under `column`; 0 for no
/// mark. Tabs become blanks, and a long line is cut around the column to at most `width` characters.
SourceLine sourceLine(const QString& text, int first, int column, int width);

} // namespace Atelier::Vel::Tool
